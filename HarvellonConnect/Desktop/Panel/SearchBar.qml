import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// The search, and the button that fills it from the browser.
Item {
    id: bar

    required property AppState state
    required property PanelKeys keys

    function focusField() {
        field.forceActiveFocus(Qt.OtherFocusReason);
    }

    function selectAll() {
        field.selectAll();
    }

    function type(text: string) {
        focusField();
        field.insert(field.cursorPosition, text);
    }

    opacity: enabled ? 1 : 0.45

    T.TextField {
        id: field

        Accessible.name: "Domain suchen"
        activeFocusOnTab: true
        color: Theme.ink
        focus: true
        font.family: Theme.family
        font.pixelSize: Theme.bodySize
        height: Theme.fieldHeight
        leftPadding: 34
        placeholderText: "Domain suchen"
        placeholderTextColor: Theme.secondary
        rightPadding: 32
        selectByMouse: true
        selectedTextColor: Theme.primaryInk
        selectionColor: Theme.focus
        text: bar.state.searchText
        verticalAlignment: Text.AlignVCenter
        width: bar.width - 40

        Keys.onPressed: event => event.accepted = bar.keys.press(event.key, event.modifiers)
        Keys.onShortcutOverride: event => event.accepted = bar.keys.claims(event.key, event.modifiers)
        Keys.priority: Keys.BeforeItem
        // Not onTextEdited: assistive technology sets the text without editing it.
        onTextChanged: bar.state.searchText = text

        background: Box {
            borderColor: field.activeFocus ? Theme.focus : Theme.outline
            borderWidth: field.activeFocus ? 2 : 1
            color: Theme.card
            radius: Theme.rowRadius
        }

        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
            size: Theme.smallIconSize
            symbol: "magnifyingglass"
            x: 10
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            color: field.placeholderTextColor
            font: field.font
            text: field.placeholderText
            visible: field.length === 0 && field.preeditText === ""
            x: field.leftPadding
        }

        SmallButton {
            anchors.right: parent.right
            anchors.rightMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            help: "Suche leeren"
            keys: PanelCommands.clearSearch
            tint: Theme.secondary
            visible: field.length > 0

            onTriggered: {
                bar.state.searchText = "";
                bar.focusField();
            }
        }
    }

    IconButton {
        anchors.right: parent.right
        height: Theme.fieldHeight
        help: "Domain des aktiven Chrome-Tabs verwenden"
        keys: PanelCommands.fillSearch
        symbol: "scope"
        width: Theme.fieldHeight

        onTriggered: bar.state.fillSearchFromChrome()
    }
}

pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// A button that shows what is chosen, and the list of what else can be.
T.ComboBox {
    id: box

    /// Maps with "key", "name" and "chosen".
    required property var choices
    property string text

    readonly property int chosenIndex: choices.findIndex(choice => choice.chosen)

    signal picked(key: string)

    Accessible.name: text
    Accessible.onPressAction: box.popup.open()
    currentIndex: chosenIndex
    focusPolicy: Qt.TabFocus
    font.family: Theme.family
    font.pixelSize: Theme.labelSize
    font.weight: Font.Medium
    implicitHeight: Theme.buttonSide
    implicitWidth: 196
    model: choices
    textRole: "name"

    Keys.forwardTo: ReturnKey {
        enabled: !box.popup.visible

        onPressed: box.popup.open()
    }
    onActivated: index => {
        box.picked(box.choices[index].key);
        box.currentIndex = Qt.binding(() => box.chosenIndex);
    }
    // A new list leaves the index at its first entry.
    onModelChanged: box.currentIndex = Qt.binding(() => box.chosenIndex)

    background: Box {
        borderColor: box.hovered ? Qt.alpha(Theme.ink, ButtonLook.hoverOutline) : Theme.outline
        color: Theme.card
        radius: ButtonLook.radius

        Box {
            anchors.fill: parent
            color: Theme.ink
            opacity: box.down ? ButtonLook.pressFill : box.hovered ? ButtonLook.hoverFill : 0
            radius: ButtonLook.radius

            Behavior on opacity {
                NumberAnimation {
                    duration: Theme.hover
                    easing.type: Easing.OutCubic
                }
            }
        }

        FocusRing {
            visible: box.visualFocus
        }
    }
    contentItem: Text {
        color: Theme.ink
        elide: Text.ElideRight
        font: box.font
        leftPadding: 10
        rightPadding: 30
        text: box.displayText
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
    }
    indicator: SymbolIcon {
        color: Theme.secondary
        size: Theme.smallIconSize
        symbol: "chevron.up.chevron.down"
        x: box.width - width - 8
        y: (box.height - height) / 2
    }
    delegate: T.ItemDelegate {
        id: entry

        required property var modelData
        required property int index

        Accessible.name: modelData.name
        Accessible.selectable: true
        Accessible.selected: modelData.chosen
        Accessible.onPressAction: entry.clicked()
        height: 28
        highlighted: box.highlightedIndex === index
        hoverEnabled: true
        width: ListView.view?.width ?? 0

        background: Box {
            borderColor: entry.highlighted ? Theme.focus : "transparent"
            borderWidth: 2
            color: entry.highlighted ? Theme.rowHover : "transparent"
            radius: Theme.tipRadius
        }
        contentItem: NoteLabel {
            color: Theme.ink
            elide: Text.ElideRight
            font.weight: entry.modelData.chosen ? Theme.titleWeight : Font.Normal
            leftPadding: 10
            rightPadding: 10
            text: entry.modelData.name
            verticalAlignment: Text.AlignVCenter
        }
    }
    popup: T.Popup {
        height: Math.min(contentItem.implicitHeight + 2 * padding, box.Window.height - 2 * margins)
        margins: Theme.gap
        padding: 5
        width: box.width
        y: box.height + 4

        background: Box {
            borderColor: Theme.outline
            color: Theme.card
            radius: Theme.rowRadius
        }
        contentItem: ListView {
            boundsBehavior: Flickable.StopAtBounds
            clip: true
            currentIndex: box.highlightedIndex
            implicitHeight: contentHeight
            model: box.delegateModel // qmllint disable type
        }
    }
}

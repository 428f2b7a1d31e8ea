import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// A choice with its words and, where the user's own command is chosen, the field to write it.
Item {
    id: row

    property alias text: box.text
    property alias choices: box.choices
    property string caption
    property string command
    property string commandHint
    property bool fixed: false ///< by the administrator

    readonly property string shownCaption: fixed ? "Von der Verwaltung festgelegt" : caption

    readonly property bool ownChosen: box.choices[box.chosenIndex]?.key === "own"

    signal picked(key: string)
    signal written(line: string)

    height: ownChosen ? 92 : 50

    BodyLabel {
        height: Theme.bodyLine
        text: box.text
        x: Theme.inset
        y: 8
    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: Accessible.StaticText
        elide: Text.ElideRight
        height: Theme.captionLine
        text: row.shownCaption
        width: box.x - 12 - x
        x: Theme.inset
        y: 26
    }

    ChoiceBox {
        id: box

        Accessible.description: row.shownCaption
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        enabled: !row.fixed
        y: 10

        onPicked: key => row.picked(key)
    }

    T.TextField {
        id: field

        Accessible.description: placeholderText // the control itself sets it to this as well
        Accessible.name: row.text + ": eigener Befehl"
        activeFocusOnTab: true
        color: enabled ? Theme.ink : Theme.secondary
        enabled: !row.fixed
        font.family: Theme.family
        font.pixelSize: Theme.labelSize
        height: Theme.fieldHeight
        leftPadding: 10
        placeholderText: row.fixed ? row.shownCaption : row.commandHint
        placeholderTextColor: Theme.secondary
        readOnly: row.fixed
        rightPadding: 10
        selectByMouse: true
        selectedTextColor: Theme.primaryInk
        selectionColor: Theme.focus
        text: row.command
        verticalAlignment: Text.AlignVCenter
        visible: row.ownChosen
        width: row.width - 2 * Theme.inset
        x: Theme.inset
        y: 52

        // Not onTextEdited: assistive technology sets the text without editing it.
        onTextChanged: {
            row.written(text);
            if (row.fixed)
                text = Qt.binding(() => row.command);
        }

        background: Box {
            borderColor: field.activeFocus ? Theme.focus : Theme.outline
            borderWidth: field.activeFocus ? 2 : 1
            color: Theme.card
            radius: Theme.rowRadius
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            color: field.placeholderTextColor
            font: field.font
            text: field.placeholderText
            visible: field.length === 0 && field.preeditText === ""
            x: field.leftPadding
        }
    }
}

import QtQuick

/// A switch with its words.
Item {
    id: row

    property alias text: toggle.text
    property bool on: false
    property string caption
    property int captionLines: 1
    property bool troubled: false
    property bool fixed: false ///< by the administrator

    readonly property string shownCaption: fixed && !troubled ? "Von der Verwaltung festgelegt" : caption

    /// Where the caption begins, with the text above it.
    readonly property real captionTop: height / 2 + 1 - (captionLines - 1) * Theme.captionLine / 2

    signal toggled(bool wanted)

    BodyLabel {
        height: Theme.bodyLine
        text: toggle.text
        x: Theme.inset
        y: row.shownCaption === "" ? (row.height - height) / 2 : row.captionTop - 18
    }

    CaptionLabel {
        Accessible.name: text
        Accessible.role: row.troubled ? Accessible.AlertMessage : Accessible.StaticText
        color: row.troubled ? Theme.badInk : Theme.secondary
        elide: Text.ElideRight
        height: row.captionLines * Theme.captionLine
        lineHeight: Theme.captionLine
        lineHeightMode: Text.FixedHeight
        maximumLineCount: row.captionLines
        text: row.shownCaption
        verticalAlignment: Text.AlignTop
        visible: text !== ""
        width: toggle.x - 12 - x
        wrapMode: row.captionLines > 1 ? Text.Wrap : Text.NoWrap
        x: Theme.inset
        y: row.captionTop
    }

    ToggleSwitch {
        id: toggle

        Accessible.description: row.shownCaption
        anchors.right: parent.right
        anchors.rightMargin: Theme.inset
        anchors.verticalCenter: parent.verticalCenter
        checked: row.on
        enabled: !row.fixed

        // The change can fail: restore the binding, so that the switch shows the real state.
        onToggled: {
            row.toggled(checked);
            checked = Qt.binding(() => row.on);
        }
    }
}

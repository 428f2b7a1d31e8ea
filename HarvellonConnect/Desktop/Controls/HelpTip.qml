import QtQuick
import Harvellon.Desktop

/// The help text of the control under the pointer, with its key.
Box {
    id: tip

    readonly property Item owner: HelpTips.owner
    readonly property bool here: owner !== null && owner.Window.window === tip.Window.window
    readonly property point corner: here ? parent.mapFromItem(owner, 0, 0) : Qt.point(0, 0)
    readonly property bool fitsBelow: here && corner.y + owner.height + 6 + height < parent.height - 4

    color: Theme.primaryBg
    height: Theme.smallButtonSide
    opacity: here ? 1 : 0
    radius: Theme.tipRadius
    visible: here
    width: words.width + 16
    x: here ? Math.max(8, Math.min(parent.width - width - 8, corner.x + (owner.width - width) / 2)) : 0
    y: here ? (fitsBelow ? corner.y + owner.height + 6 : corner.y - height - 6) : 0
    z: 10

    Row {
        id: words

        anchors.centerIn: parent
        spacing: Theme.gap

        CaptionLabel {
            color: Theme.primaryInk
            font.weight: Font.Medium
            text: HelpTips.text
        }

        CaptionLabel {
            color: Theme.primaryInk
            opacity: 0.68
            text: HelpTips.keys
            visible: text !== ""
        }
    }
}

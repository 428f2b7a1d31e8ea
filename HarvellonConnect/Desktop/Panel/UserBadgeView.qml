import QtQuick
import Harvellon.Desktop

/// The signed-in user and the number of projects.
Item {
    id: badge

    required property string name
    /// Absent below zero.
    property int projectCount: -1
    property bool showStatus: false
    property bool loading: false

    readonly property string countText: projectCount >= 0 ? projectCount + " Projekte" : ""
    readonly property string secondLine: countText || (loading ? "Projekte werden geladen ..." : "")

    Accessible.description: secondLine + (showStatus ? ", Verbunden" : "")
    Accessible.name: name
    Accessible.role: Accessible.StaticText

    Box {
        color: Theme.bg
        height: Theme.pictureSide
        radius: width / 2
        width: Theme.pictureSide
        x: 11
        y: 8

        SymbolIcon {
            anchors.centerIn: parent
            color: Theme.ink
            size: Theme.smallIconSize
            symbol: "person.fill"
        }
    }

    BodyLabel {
        elide: Text.ElideRight
        font.weight: Theme.titleWeight
        height: Theme.bodyLine
        text: badge.name
        width: (badge.showStatus ? status.x : badge.width) - 12 - x
        x: Theme.textStart
        y: badge.secondLine === "" ? 14 : 6
    }

    Row {
        spacing: 6
        x: Theme.textStart
        y: 23

        Loader {
            active: badge.loading
            anchors.verticalCenter: parent.verticalCenter
            visible: active

            sourceComponent: Spinner {
                color: Theme.secondary
                size: 12
            }
        }

        CaptionLabel {
            height: Theme.captionLine
            text: badge.secondLine
        }
    }

    Pill {
        id: status

        anchors.right: parent.right
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        color: Theme.okBg
        ink: Theme.okInk
        text: "Verbunden"
        visible: badge.showStatus

        sign: SymbolIcon {
            color: Theme.okInk
            size: 12
            symbol: "checkmark.circle.fill"
        }
    }
}

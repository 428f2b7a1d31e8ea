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

    Rectangle {
        color: Theme.bg
        height: 28
        radius: 14
        width: 28
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
        font.weight: Font.DemiBold
        height: 17
        text: badge.name
        width: (badge.showStatus ? status.x : badge.width) - 12 - x
        x: 50
        y: badge.secondLine === "" ? 14 : 6
    }

    Row {
        spacing: 6
        x: 50
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
            height: 14
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

import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The content of the settings window.
FocusScope {
    id: view

    required property SettingsController controller
    required property AppState state
    required property string versionText

    readonly property real cardWidth: width - 2 * Theme.settingsMargin
    /// The additional height of an enlarged window goes to the list of accounts.
    readonly property real extra: Math.max(0, height - 460)

    Accessible.name: "Einstellungen"
    Accessible.role: Accessible.Pane
    focus: true
    height: 460
    width: 520

    Keys.onEscapePressed: view.controller.closeRequested()

    Connections {
        function onOpened() {
            view.nextItemInFocusChain()?.forceActiveFocus(Qt.OtherFocusReason);
        }

        target: view.controller
    }

    Shortcut {
        sequences: ["Ctrl+W"]

        onActivated: view.controller.closeRequested()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.bg
    }

    HeadingLabel {
        font.pixelSize: Theme.headingSize
        height: 22
        text: "Einstellungen - Harvellon Connect"
        x: Theme.settingsMargin
        y: 18
    }

    SectionLabel {
        text: "Accounts"
        x: Theme.settingsMargin
        y: 44
    }

    AccountsSection {
        height: 132 + view.extra
        state: view.state
        width: view.cardWidth
        x: Theme.settingsMargin
        y: 62
    }

    SectionLabel {
        text: "Tastatur und Start"
        x: Theme.settingsMargin
        y: 202 + view.extra
    }

    StartSection {
        height: 122
        state: view.state
        width: view.cardWidth
        x: Theme.settingsMargin
        y: 220 + view.extra
    }

    SectionLabel {
        text: "Über"
        x: Theme.settingsMargin
        y: 350 + view.extra
    }

    AboutSection {
        height: 78
        versionText: view.versionText
        width: view.cardWidth
        x: Theme.settingsMargin
        y: 368 + view.extra
    }
}

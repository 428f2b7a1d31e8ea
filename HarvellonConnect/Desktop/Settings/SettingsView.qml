import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop
import Harvellon.State

/// The content of the settings window. What does not fit into it scrolls.
FocusScope {
    id: view

    required property SettingsController controller
    required property AppState state
    required property string versionText

    readonly property real cardWidth: width - 2 * Theme.settingsMargin
    readonly property Item focusedItem: Window.activeFocusItem

    /// Scrolls until an item that was reached with the keyboard is in sight, with its row.
    function reveal(item: Item) {
        const around = 32;
        const top = item.mapToItem(page.contentItem, 0, 0).y - around;
        const bottom = top + item.height + 2 * around - page.height;
        page.contentY = Math.max(0, Math.min(top, Math.max(page.contentY, bottom), page.contentHeight - page.height));
    }

    Accessible.name: "Einstellungen"
    Accessible.role: Accessible.Pane
    focus: true
    height: 460
    width: 520

    Keys.onEscapePressed: view.controller.closeRequested()
    onFocusedItemChanged: if (focusedItem && focusedItem !== view) {
        view.reveal(focusedItem);
    }

    Connections {
        function onOpened() {
            view.nextItemInFocusChain()?.forceActiveFocus(Qt.OtherFocusReason);
            page.contentY = 0;
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

    Flickable {
        id: page

        /// The additional height of an enlarged window goes to the list of accounts.
        readonly property real extra: Math.max(0, height - leastHeight)
        readonly property real leastHeight: 436 + start.height + programs.height + about.height + told
        readonly property real told: errorSpace + (refusal.visible ? refusal.height + Theme.gap : 0)
        readonly property real errorSpace: accountError.visible ? accountError.height + Theme.gap : 0
        /// How much lower the sections below the accounts stand.
        readonly property real below: extra + told

        anchors.fill: parent
        boundsBehavior: Flickable.StopAtBounds
        contentHeight: Math.max(height, leastHeight)
        pixelAligned: true

        T.ScrollBar.vertical: ListScrollBar {
            bottomPadding: 4
            implicitWidth: 9
            needed: page.contentHeight > page.height
            rightPadding: 3
            topPadding: 4
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
            height: 132 + page.extra
            state: view.state
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 62
        }

        ErrorLine {
            id: accountError

            text: view.state.accountError
            visible: text !== ""
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 202 + page.extra

            onCopied: view.state.copyText(text)
            onDismissed: view.state.dismissAccountError()
        }

        RefusalLine {
            id: refusal

            text: view.state.refusals.standing
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 202 + page.extra + page.errorSpace

            onAllowed: view.state.refusals.openSettings()
        }

        SectionLabel {
            text: "Tastatur und Start"
            x: Theme.settingsMargin
            y: 202 + page.below
        }

        StartSection {
            id: start

            state: view.state
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 220 + page.below
        }

        SectionLabel {
            text: "Verbundene Projekte"
            x: Theme.settingsMargin
            y: 228 + start.height + page.below
        }

        ProjectsSection {
            height: 126
            state: view.state
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 246 + start.height + page.below
        }

        SectionLabel {
            text: "Programme"
            x: Theme.settingsMargin
            y: 380 + start.height + page.below
        }

        ProgramsSection {
            id: programs

            programs: view.state.programs
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 398 + start.height + page.below
        }

        SectionLabel {
            text: "Über"
            x: Theme.settingsMargin
            y: 406 + start.height + programs.height + page.below
        }

        AboutSection {
            id: about

            diagnosis: view.state.diagnosis
            management: view.state.management
            versionText: view.versionText
            width: view.cardWidth
            x: Theme.settingsMargin
            y: 424 + start.height + programs.height + page.below

            // What a report has come to stands below the buttons.
            onHeightChanged: if (diagnosis.message !== "") {
                page.contentY = Math.max(0, y + height + 12 - page.height);
            }
        }
    }

    Rectangle {
        anchors.bottom: parent.bottom
        height: 18
        visible: !page.atYEnd
        width: parent.width

        gradient: Gradient {
            GradientStop {
                color: Qt.alpha(Theme.bg, 0)
                position: 0
            }

            GradientStop {
                color: Theme.bg
                position: 1
            }
        }
    }
}

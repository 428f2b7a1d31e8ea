import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The main panel.
FocusScope {
    id: panel

    required property PanelController controller
    required property AppState state
    required property string versionText
    property alias isActivityExpanded: activity.isActivityExpanded

    readonly property bool hasError: state.lastError !== ""

    function focusField() {
        content.searchEnabled ? search.focusField() : account.focusSignIn();
    }

    Accessible.name: "Harvellon Connect"
    Accessible.role: Accessible.Pane
    focus: true
    height: 660
    width: 640

    Keys.onPressed: event => event.accepted = keys.pressElsewhere(event.key, event.modifiers, event.text)
    Keys.onShortcutOverride: event => event.accepted = keys.claims(event.key, event.modifiers)

    Connections {
        function onOpened() {
            panel.focusField();
            search.selectAll();
        }

        // The panel may have been shown before, with the focus on a button or in a menu, where Enter does another thing.
        function onProjectChosen(domain: string) {
            list.closeMenu();
            activity.closeMenu();
            panel.focusField();
            keys.showProject(domain);
        }

        target: panel.controller
    }

    PanelContent {
        id: content

        state: panel.state
    }

    PanelKeys {
        id: keys

        state: panel.state

        onActivityRequested: activity.isActivityExpanded = !activity.isActivityExpanded
        onCloseRequested: panel.controller.closeRequested()
        onQuitRequested: panel.controller.quitRequested()
        onRowMoved: search.focusField()
        onSettingsRequested: panel.controller.settingsRequested()
        onTyped: text => search.type(text)
        onUpdatesRequested: panel.controller.updatesRequested()
    }

    PanelSpeech {
        id: speech

        state: panel.state
    }

    Item {
        Accessible.name: speech.announcement
        Accessible.role: Accessible.AlertMessage
        height: 1
        visible: speech.announcement !== ""
        width: 1
    }

    Box {
        anchors.fill: parent
        borderColor: Theme.cardEdge
        borderWidth: panel.controller.rounded ? 1 : 0
        color: Theme.bg
        radius: panel.controller.rounded ? Theme.cardRadius : 0
    }

    PanelHeader {
        height: 36
        state: panel.state
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: 13

        onQuitRequested: panel.controller.quitRequested()
        onSettingsRequested: panel.controller.settingsRequested()
        onUpdatesRequested: panel.controller.updatesRequested()
    }

    AccountCard {
        id: account

        content: content
        height: 44
        state: panel.state
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: 60
    }

    ErrorLine {
        id: accountError

        text: panel.state.accountError
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: 112

        onCopied: panel.state.copyText(text)
        onDismissed: panel.state.dismissAccountError()
    }

    SearchBar {
        id: search

        enabled: content.searchEnabled
        focus: true
        height: Theme.fieldHeight
        keys: keys
        state: panel.state
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: accountError.visible ? accountError.y + accountError.height + Theme.gap : accountError.y

        onEnabledChanged: if (enabled) {
            focusField();
        }
    }

    RefusalLine {
        id: refusal

        closable: true
        text: panel.state.refusals.text
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: search.y + search.height + Theme.gap

        onAllowed: panel.state.refusals.openSettings()
        onDismissed: panel.state.refusals.dismiss()
    }

    ErrorLine {
        id: error

        help: panel.state.access.offered ? "Hilfe zum Zugang" : ""
        text: panel.state.lastError
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: refusal.visible ? refusal.y + refusal.height + Theme.gap : refusal.y

        onCopied: panel.state.copyText(text)
        onDismissed: panel.state.dismissLastError()
        onHelped: panel.state.access.show()
    }

    ProjectList {
        id: list

        content: content
        height: Math.max(0, activity.y - Theme.gap - y)
        keys: keys
        speech: speech
        state: panel.state
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: panel.hasError ? error.y + error.height + Theme.gap : error.y
    }

    ActivitySection {
        id: activity

        speech: speech
        state: panel.state
        width: parent.width - 2 * x
        x: Theme.panelMargin
        y: footer.y - height
    }

    CaptionLabel {
        id: footer

        Accessible.name: text
        Accessible.role: Accessible.StaticText
        anchors.horizontalCenter: parent.horizontalCenter
        color: Theme.footer
        height: 26
        text: "Harvellon Connect " + panel.versionText
        y: panel.height - height
    }

    HelpTip {}
}

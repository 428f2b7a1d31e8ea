import QtQuick
import Harvellon.Desktop
import Harvellon.State

/// The way to the first mount, for a panel without projects.
Column {
    id: view

    required property AppState state

    readonly property SetupSteps steps: state.setup

    Accessible.name: "Einrichtung"
    Accessible.role: Accessible.Grouping

    // When the user comes back from the terminal or the browser, and when the panel opens: both, because a panel
    // that is closed and opened again at once has never lost the focus. No steps while the view is destroyed.
    Window.onActiveChanged: if (Window.active && steps) {
        steps.look();
    }
    Window.onVisibilityChanged: if (Window.visibility !== Window.Hidden && steps) {
        steps.look();
    }
    Component.onCompleted: steps.look()

    SetupStep {
        buttonText: done || view.state.isAuthenticating ? "" : "Anmelden"
        done: view.state.signedIn
        number: 1
        text: done ? view.state.userName : view.state.isAuthenticating ? "Warte auf Browser-Login..." : "Im Browser, einmal für alle Projekte."
        title: "Anmelden"
        width: view.width

        onPressed: view.state.addAccount()
    }

    SetupStep {
        buttonText: done ? "Schlüssel kopieren" : view.steps.keyOffer
        done: view.steps.key === SetupSteps.State.ready
        number: 2
        text: done ? "Gehört einmal ins Harvellon-Backend." : view.steps.key === SetupSteps.State.broken ? "Der öffentliche Teil (.pub) fehlt." : view.steps.key === SetupSteps.State.missing ? "Du hast noch keinen." : ""
        title: "SSH-Schlüssel"
        width: view.width

        onPressed: done ? view.steps.copyKey() : view.steps.makeKey()
    }

    SetupStep {
        buttonText: view.steps.sshfs === SetupSteps.State.missing || view.steps.sshfs === SetupSteps.State.broken ? "Anleitung" : ""
        done: view.steps.sshfs === SetupSteps.State.ready
        number: 3
        text: done ? "Installiert und startbereit." : view.steps.sshfs === SetupSteps.State.broken ? "Installiert, startet aber nicht." : view.steps.sshfs === SetupSteps.State.missing ? "Noch nicht installiert." : ""
        title: "sshfs"
        width: view.width

        onPressed: view.steps.explainSSHFS()
    }
}

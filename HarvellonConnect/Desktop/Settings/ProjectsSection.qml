import QtQuick
import Harvellon.State

/// How git and the editor behave in mounted projects.
Card {
    id: card

    required property AppState state

    Accessible.name: "Verbundene Projekte"
    Accessible.role: Accessible.Grouping

    SwitchRow {
        caption: troubled ? card.state.gitProblem : "Git liest nur Geändertes neu und vertraut den Repositories der Projekte. Nur für Server, denen du vertraust."
        captionLines: 2
        height: 64
        on: card.state.adaptsGit
        text: "Git an verbundene Projekte anpassen"
        troubled: card.state.gitProblem !== ""
        width: parent.width
        y: 2

        onToggled: wanted => card.state.adaptsGit = wanted
    }

    SwitchRow {
        caption: "Ab dem nächsten Öffnen beobachtet er den Ordner nicht: Änderungen zeigt er erst nach dem Aktualisieren."
        captionLines: 2
        height: 64
        on: card.state.quietWorkspace
        text: "Ruhiger Arbeitsbereich in VS Code"
        width: parent.width
        y: 60

        onToggled: wanted => card.state.quietWorkspace = wanted
    }
}

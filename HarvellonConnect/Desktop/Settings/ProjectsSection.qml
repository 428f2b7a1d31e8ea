import QtQuick
import Harvellon.State

/// How git and the editor behave in mounted projects.
Card {
    id: card

    required property AppState state

    Accessible.name: "Verbundene Projekte"
    Accessible.role: Accessible.Grouping

    SwitchRow {
        caption: troubled ? card.state.gitProblem : "Git liest nur Dateien neu, die sich geändert haben, und vertraut den Repositories. Der Eintrag steht in deiner Git-Konfiguration."
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
        caption: "Der Editor durchsucht und beobachtet den Ordner nicht von selbst; fremde Änderungen zeigt er erst nach dem Aktualisieren."
        captionLines: 2
        height: 64
        on: card.state.quietWorkspace
        text: "Ruhiger Arbeitsbereich in VS Code"
        width: parent.width
        y: 60

        onToggled: wanted => card.state.quietWorkspace = wanted
    }
}

import QtQuick
import Harvellon.State

/// Which of the user's programs open a project.
Card {
    id: card

    required property ProgramSettings programs

    Accessible.name: "Programme"
    Accessible.role: Accessible.Grouping
    height: rows.height + 8

    Column {
        id: rows

        width: parent.width
        y: 2

        ChoiceRow {
            caption: "Öffnet die Ordner verbundener Projekte."
            choices: card.programs.editors
            command: card.programs.editorCommand
            commandHint: "Befehl; %f steht für den Ordner"
            fixed: card.programs.editorIsFixed
            text: "Editor"
            width: parent.width

            onPicked: key => card.programs.editor = key
            onWritten: line => card.programs.editorCommand = line
        }

        ChoiceRow {
            caption: "Für die SSH-Shell und Editoren im Terminal."
            choices: card.programs.terminals
            command: card.programs.terminalCommand
            commandHint: "Befehl; %c steht für das, was darin läuft, sonst nach -e"
            fixed: card.programs.terminalIsFixed
            text: "Terminal"
            width: parent.width

            onPicked: key => card.programs.terminal = key
            onWritten: line => card.programs.terminalCommand = line
        }

        ChoiceRow {
            caption: "Ein Tunnel ist für Clients ohne eigenes SSH."
            choices: card.programs.databaseWays
            text: "Datenbank"
            width: parent.width

            onPicked: key => card.programs.databaseWay = key
        }
    }
}

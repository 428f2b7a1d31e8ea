import QtQuick

/// Loads a row's state mark. Most rows have none, and an unused item would cost memory in each of them.
Loader {
    property date since
    property bool kept
}

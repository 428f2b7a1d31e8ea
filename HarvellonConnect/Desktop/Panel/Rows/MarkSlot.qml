import QtQuick

/// Where a row's mark stands, made only for the few rows that have one.
Loader {
    property date since
}

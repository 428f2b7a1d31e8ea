import QtQuick

Rectangle {
    color: Theme.card
    border.color: Theme.cardEdge
    radius: Theme.cardRadius
}

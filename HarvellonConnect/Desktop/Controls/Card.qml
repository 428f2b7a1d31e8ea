import QtQuick
import Harvellon.Desktop

Box {
    color: Theme.card
    borderColor: Theme.cardEdge
    radius: Theme.cardRadius
}

import QtQuick
import QtQuick.Templates as T
import Harvellon.Desktop

/// A context menu inside of its window, so that the window keeps the focus and stays open.
T.Menu {
    id: menu

    property Item focusedBefore

    /// Opens at a place of `item`, or as near to it as the window has room, with the first entry chosen.
    function openAt(item: Item, place: point) {
        menu.focusedBefore = item.Window.activeFocusItem;
        menu.parent = item;
        menu.popup(item, place.x, place.y);
        menu.currentIndex = 0;
    }

    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    margins: Theme.gap
    modal: true
    padding: 5

    // The popup itself would give the focus to the whole window.
    onClosed: if (focusedBefore !== null) {
        focusedBefore.forceActiveFocus(Qt.PopupFocusReason);
    }

    T.Overlay.modal: Item {}
    background: Box {
        borderColor: Theme.outline
        color: Theme.card
        radius: Theme.rowRadius
    }
    contentItem: ListView {
        currentIndex: menu.currentIndex
        implicitHeight: contentHeight
        implicitWidth: 220
        interactive: false
        model: menu.contentModel

        Window.onVisibilityChanged: if (Window.visibility === Window.Hidden) {
            menu.close();
        }
    }
    delegate: MenuEntry {}
}

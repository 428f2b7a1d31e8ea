#include "Desktop/Panel/Rows/ActionTable.h"

#include <algorithm>

QVariantList ActionTable::actions() const {
    QVariantList list;
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.slot)
            list.append(QVariant::fromValue(ShownAction{&action}));
    }
    return list;
}

QVariantList ActionTable::ghostSlots() const {
    const RowFacts everything{.coder = true, .databaseUser = true};
    QVariantList slotsOfOffers;
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.slot && action.offered(everything))
            slotsOfOffers.append(action.slotPosition());
    }
    return slotsOfOffers;
}

int ActionTable::firstSlot(int offers) const {
    int first = railWidth();
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.slot && (offers & 1 << action.targetNumber()) != 0)
            first = std::min(first, action.slotPosition());
    }
    return first;
}

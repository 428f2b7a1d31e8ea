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

QVariantList ActionTable::menu(int offers) const {
    QList<ShownAction> entries;
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.menuGroup != MenuGroup::none && (offers & 1 << action.targetNumber()) != 0)
            entries.append({&action});
    }
    std::stable_sort(entries.begin(), entries.end(), [](const ShownAction& one, const ShownAction& other) {
        return one.menuGroup() < other.menuGroup();
    });
    QVariantList list;
    for (const ShownAction& entry : entries)
        list.append(QVariant::fromValue(entry));
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

bool ActionTable::opensEditor(int offers) const {
    return (offers & 1 << static_cast<int>(HoverTarget::vscode)) != 0;
}

int ActionTable::firstSlot(int offers) const {
    int first = railWidth();
    for (const ProjectAction& action : ProjectActions::table()) {
        if (action.slot && (offers & 1 << action.targetNumber()) != 0)
            first = std::min(first, action.slotPosition());
    }
    return first;
}

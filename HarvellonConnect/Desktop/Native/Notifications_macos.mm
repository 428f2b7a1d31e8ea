#include "Desktop/Native/Notifications.h"

void Notifications::show(const QString& title, const QString& text, const QString& domain) {
    showAtItem(title, text, domain);
}

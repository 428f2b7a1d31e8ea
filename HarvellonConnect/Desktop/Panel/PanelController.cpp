#include "Desktop/Panel/PanelController.h"

void PanelController::setRounded(bool rounded) {
    if (rounded == m_rounded)
        return;
    m_rounded = rounded;
    Q_EMIT roundedChanged();
}

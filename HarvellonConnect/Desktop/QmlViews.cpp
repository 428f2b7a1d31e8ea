#include "Desktop/QmlViews.h"

#include <QQmlEngine>

// Written by the build. Naming them keeps the linker from leaving the types out of a program that uses them
// from QML alone.
extern void qml_register_types_Harvellon_State();
extern void qml_register_types_Harvellon_Desktop();

QmlViews::QmlViews() = default;
QmlViews::~QmlViews() = default;

QQmlEngine& QmlViews::engine() {
    if (m_engine)
        return *m_engine;
    static const bool typesKnown = [] {
        qml_register_types_Harvellon_State();
        qml_register_types_Harvellon_Desktop();
        return true;
    }();
    Q_UNUSED(typesKnown)
    m_engine = std::make_unique<QQmlEngine>();
    m_engine->addImportPath(QStringLiteral("qrc:/qml"));
    return *m_engine;
}

QUrl QmlViews::address(const QString& name) {
    return QUrl(QStringLiteral("qrc:/qml/Harvellon/Desktop/%1.qml").arg(name));
}

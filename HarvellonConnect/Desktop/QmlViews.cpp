#include "Desktop/QmlViews.h"

#include <QQmlEngine>

// Written by the build. Naming them keeps the linker from leaving the types out of a program that uses them
// from QML alone.
extern void qml_register_types_Harvellon_State();
extern void qml_register_types_Harvellon_Desktop();

void addViews(QQmlEngine& engine) {
    static const bool typesKnown = [] {
        qml_register_types_Harvellon_State();
        qml_register_types_Harvellon_Desktop();
        return true;
    }();
    Q_UNUSED(typesKnown)
    const QString imports = QStringLiteral("qrc:/qml");
    if (!engine.importPathList().contains(imports))
        engine.addImportPath(imports);
}

QUrl viewAddress(const QString& name) {
    return QUrl(QStringLiteral("qrc:/qml/Harvellon/Desktop/%1.qml").arg(name));
}

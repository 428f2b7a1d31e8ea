#include "Desktop/Native/Appearance.h"
#include "Desktop/QmlViews.h"

#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlComponent>
#include <QTest>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {
double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QString modeName(bool dark) {
    return dark ? u"dark"_s : u"light"_s;
}

void setDesktop(bool dark) {
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? QColor(30, 30, 30) : QColor(240, 240, 240));
    palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
    QGuiApplication::setPalette(palette);
}
} // namespace

/// The colours as Theme.qml has them, and the symbols as they are drawn.
class TestLook : public QObject {
    Q_OBJECT

    QmlViews m_views;
    std::unique_ptr<QObject> m_probe;

    [[nodiscard]] QColor colour(const char* token) const {
        const auto* theme = m_probe->property("theme").value<QObject*>();
        const QVariant value = theme->property(token);
        if (!value.canConvert<QColor>())
            qFatal("Theme has no colour %s", token);
        return value.value<QColor>();
    }

  private Q_SLOTS:

    void initTestCase() {
        QQmlComponent component(&m_views.engine());
        component.setData(
            "import QtQml\nimport Harvellon.Desktop\nQtObject { property QtObject theme: Theme }", QUrl());
        m_probe.reset(component.create());
        QVERIFY2(m_probe, qPrintable(component.errorString()));
    }

    void textReaches45AndSigns3_data() {
        QTest::addColumn<QByteArray>("ink");
        QTest::addColumn<QByteArray>("ground");
        QTest::addColumn<double>("least");

        struct Pair {
            const char* ink;
            const char* ground;
            double least;
        };

        constexpr double text = 4.5;
        constexpr double sign = 3.0;
        const Pair pairs[] = {
            {"ink", "bg", text},          {"ink", "card", text},
            {"ink", "rowHover", text},    {"secondary", "bg", text},
            {"secondary", "card", text},  {"secondary", "rowHover", text},
            {"footer", "bg", text},       {"okInk", "okBg", text},
            {"okInk", "card", text},      {"busyInk", "busyBg", text},
            {"badInk", "badBg", text},    {"badInk", "card", text},
            {"danger", "card", text},     {"primaryInk", "primaryBg", text},
            {"focus", "card", sign},      {"focus", "bg", sign},
            {"switchOn", "card", sign},   {"switchOff", "card", sign},
            {"knobOn", "switchOn", sign}, {"knobOff", "switchOff", sign},
            {"emptyIcon", "card", sign},  {"warn", "card", sign},
            {"info", "card", sign},
        };
        for (const Pair& pair : pairs)
            QTest::addRow("%s on %s", pair.ink, pair.ground)
                << QByteArray(pair.ink) << QByteArray(pair.ground) << pair.least;
    }

    void textReaches45AndSigns3() {
        QFETCH(QByteArray, ink);
        QFETCH(QByteArray, ground);
        QFETCH(double, least);
        for (const bool dark : {false, true}) {
            setDesktop(dark);
            const double reached = contrast(colour(ink.constData()), colour(ground.constData()));
            QVERIFY2(reached >= least, qPrintable(u"%1 %2"_s.arg(modeName(dark)).arg(reached)));
        }
    }

    void followsTheDesktopAsItChanges() {
        setDesktop(false);
        QCOMPARE(colour("bg"), QColor(0xf5, 0xf0, 0xeb));
        setDesktop(true);
        QCOMPARE(colour("bg"), QColor(0x1f, 0x1c, 0x19));
    }

    void theUsersChoiceBeatsThePalette() {
        setDesktop(false);
        Appearance appearance;
        int changes = 0;
        connect(&appearance, &Appearance::darkChanged, this, [&changes] { ++changes; });
        const QString space = u"org.freedesktop.appearance"_s;
        const QString key = u"color-scheme"_s;
        appearance.applySetting(space, key, 1U);
        QVERIFY(appearance.dark());
        appearance.applySetting(space, u"contrast"_s, 2U);
        QVERIFY(appearance.dark());
        appearance.applySetting(space, key, 0U);
        QVERIFY(!appearance.dark());
        QCOMPARE(changes, 2);
    }

    void theStatusIconIsLegibleOnAnyBar() {
        const QImage icon(u":/icons/StatusIcon-22.png"_s);
        QVERIFY(!icon.isNull());
        const QColor ink = icon.pixelColor(icon.width() / 4, icon.height() / 2);
        QCOMPARE(ink.alpha(), 255);
        QVERIFY(contrast(ink, QColor(0xf0, 0xf0, 0xf0)) >= 3.0);
        QVERIFY(contrast(ink, QColor(0x24, 0x24, 0x24)) >= 3.0);
    }
};

QTEST_MAIN(TestLook)
#include "tst_look.moc"

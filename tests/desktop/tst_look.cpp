#include "Desktop/Native/Appearance.h"
#include "Desktop/QmlViews.h"
#include "Desktop/StatusItem/StatusSign.h"

#include <QColor>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QQmlComponent>
#include <QTest>

#include <cmath>
#include <numeric>

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

/// How much ink a name takes.
double inkOf(const QFont& font) {
    QImage paper(200, 60, QImage::Format_Grayscale8);
    paper.fill(Qt::white);
    QPainter painter(&paper);
    painter.setFont(font);
    painter.drawText(paper.rect(), Qt::AlignCenter, u"Beispiel Shop"_s);
    return std::accumulate(paper.constBits(), paper.constBits() + paper.sizeInBytes(), 0.0,
                           [](double ink, uchar grey) { return ink + 255 - grey; });
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

    [[nodiscard]] QColor colour(const QByteArray& token) const {
        const auto* theme = m_probe->property("theme").value<QObject*>();
        const QVariant value = theme->property(token.constData());
        if (!value.canConvert<QColor>())
            qFatal("Theme has no colour %s", token.constData());
        return value.value<QColor>();
    }

  private Q_SLOTS:

    void initTestCase() {
        QQmlComponent component(&m_views.engine());
        component.setData(
            "import QtQml\nimport Harvellon.Desktop\nQtObject { property QtObject theme: Theme; "
            "property Appearance appearance: Appearance }",
            QUrl());
        m_probe.reset(component.create());
        QVERIFY2(m_probe, qPrintable(component.errorString()));
    }

    void textReaches45AndSigns3() {
        const std::pair<double, QByteArrayList> wanted[] = {
            {4.5,
             {"ink on bg", "ink on card", "ink on rowHover", "secondary on bg", "secondary on card",
              "secondary on rowHover", "footer on bg", "okInk on okBg", "okInk on card", "busyInk on busyBg",
              "badInk on badBg", "badInk on card", "danger on card", "primaryInk on primaryBg"}},
            {3.0,
             {"focus on card", "focus on bg", "switchOn on card", "switchOff on card", "knobOn on switchOn",
              "knobOff on switchOff", "emptyIcon on card", "warn on card", "info on card"}}};
        for (const bool dark : {false, true}) {
            setDesktop(dark);
            for (const auto& [least, pairs] : wanted) {
                for (const QByteArray& pair : pairs) {
                    const QByteArrayList names = pair.split(' ');
                    const double reached = contrast(colour(names.first()), colour(names.last()));
                    QVERIFY2(reached >= least,
                             pair + (dark ? " dark " : " light ") + QByteArray::number(reached));
                }
            }
        }
    }

    void namesAndTitlesAreHeavierInAnyFont() {
        for (const char* family :
             {"Sans Serif", "DejaVu Sans", "Inter"}) { // an alias; without a medium weight
            QGuiApplication::setFont(QFont(QLatin1String(family)));
            QmlViews views;
            for (const QByteArray label : {"BodyLabel", "HeadingLabel"}) {
                QQmlComponent component(&views.engine());
                component.setData("import Harvellon.Desktop\n" + label + " {}", QUrl());
                const std::unique_ptr<QObject> made(component.create());
                const auto font = made->property("font").value<QFont>();
                QFont normal = font;
                normal.setWeight(QFont::Normal);
                QVERIFY2(inkOf(font) > 1.08 * inkOf(normal), family + QByteArray(" ") + label);
            }
        }
        if (QFontDatabase::hasFamily(u"Inter"_s)) // and no heavier than wanted
            QCOMPARE(presentWeight(u"Inter"_s, QFont::Medium), QFont::Medium);
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

    void moreContrastIsSeen() {
        auto* const appearance = m_probe->property("appearance").value<Appearance*>();
        const QString space = u"org.freedesktop.appearance"_s;
        for (const bool dark : {false, true}) {
            setDesktop(dark);
            appearance->applySetting(space, u"contrast"_s, 1U);
            for (const char* token : {"secondary", "footer"})
                QVERIFY(contrast(colour(token), colour("bg")) >= 7.0);
            for (const char* token : {"outline", "cardEdge"})
                QVERIFY(contrast(colour(token), colour("card")) >= 3.0);
            appearance->applySetting(space, u"contrast"_s, 0U);
            QVERIFY(contrast(colour("outline"), colour("card")) < 3.0);
        }
    }

    void theStatusIconIsLegibleOnAnyBar() {
        QList<QImage> forms; // a bar may paint all in one colour
        for (int picture = 0; picture < 4; ++picture) {
            const QImage icon = statusIcon(StatusSign::Picture(picture)).pixmap(16).toImage();
            const QColor ink = icon.pixelColor(icon.width() / 4, icon.height() / 2);
            QCOMPARE(ink.alpha(), 255);
            QVERIFY(contrast(ink, QColor(0xf0, 0xf0, 0xf0)) >= 3.0);
            QVERIFY(contrast(ink, QColor(0x24, 0x24, 0x24)) >= 3.0);
            QVERIFY(!forms.contains(icon.createAlphaMask()));
            forms.append(icon.createAlphaMask());
        }
    }
};

QTEST_MAIN(TestLook)
#include "tst_look.moc"

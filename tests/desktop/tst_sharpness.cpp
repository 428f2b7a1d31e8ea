#include "Desktop/Controls/Symbols/SymbolImage.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
/// How many pixels each colour takes on a straight way through the picture.
QList<std::pair<QColor, int>> colours(const QImage& picture, const QPointF& start, const QPointF& end) {
    const QPoint from = start.toPoint();
    const QPoint way = end.toPoint() - from;
    QList<std::pair<QColor, int>> found;
    for (int i = 0; i <= way.manhattanLength(); ++i) {
        const QColor colour = picture.pixelColor(from + way * i / way.manhattanLength());
        if (found.isEmpty() || found.constLast().first != colour)
            found.append({colour, 0});
        ++found.last().second;
    }
    return found;
}
} // namespace

/// The panel at the scale of QT_SCALE_FACTOR, pixel by pixel.
class TestSharpness : public DesktopTest {
    Q_OBJECT

  public:
    TestSharpness() : DesktopTest(false) {}

  private Q_SLOTS:

    void linesAndSymbolsLieOnPixels() {
        QCursor::setPos(0, 0);
        PanelWindow* const window = openSignedIn();
        const qreal ratio = window->effectiveDevicePixelRatio();
        const int line = static_cast<int>(ratio);
        QImage picture = window->grabWindow().convertToFormat(QImage::Format_RGB32);
        const auto placed = [window](const QRect& rect) {
            return QRectF(rect.translated(-window->position()));
        };
        for (const char* name : {"Account", "Projekte", "Aktivitaet", "Beenden"}) {
            const QRectF frame = placed(heard::find(window, QLatin1String(name))->rect());
            const QPointF middle = frame.center();
            for (const auto& [side, reach] : {std::pair(QPointF(middle.x(), frame.top()), QPointF(0, 3)),
                                              {QPointF(middle.x(), frame.bottom()), QPointF(0, 3)},
                                              {QPointF(frame.left(), middle.y()), QPointF(3, 0)},
                                              {QPointF(frame.right(), middle.y()), QPointF(3, 0)}}) {
                const auto across = colours(picture, (side - reach) * ratio, (side + reach) * ratio);
                QVERIFY2(across.size() == 3 && across.at(1).second == line, name);
            }
        }

        const int margin = qRound(6 * ratio);
        const int side = qRound(30 * ratio) - 2 * margin;
        QImage symbol(side, side, QImage::Format_RGB32);
        symbol.fill(Qt::white);
        QPainter(&symbol).drawImage(0, 0, symbolImage(u"terminal"_s, u"#24211c"_s, side));
        const QRect list =
            heard::find(window, u"Projekte"_s, QAccessible::List)->rect().adjusted(0, 6, 0, -24);
        for (const bool scrolled : {false, true}) {
            if (scrolled)
                QTest::keyClick(window, Qt::Key_End, Qt::ControlModifier);
            picture = window->grabWindow().convertToFormat(QImage::Format_RGB32);
            int sharp = 0;
            heard::visit(QAccessible::queryAccessibleInterface(window), [&](QAccessibleInterface* button) {
                const QPoint corner = (placed(button->rect()).topLeft() * ratio).toPoint();
                if (button->text(QAccessible::Name) == u"SSH-Shell"_s && list.contains(button->rect()))
                    sharp +=
                        picture.copy({corner + QPoint(margin, margin), symbol.size()}) == symbol ? 1 : -99;
            });
            QVERIFY(sharp > 3);
            const QPointF top(440, placed(list).top()); // between the buttons there are the lines alone
            for (const auto& [colour, pixels] :
                 colours(picture, top * ratio, (top + QPointF(0, list.height())) * ratio)) {
                const int points = colour == QColor(u"#1a5fb4"_s) ? 2 : 1; // the ring of the chosen row
                QVERIFY(colour == Qt::white || pixels == static_cast<int>(points * ratio));
            }
        }
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestSharpness>(argc, argv);
}

#include "tst_sharpness.moc"

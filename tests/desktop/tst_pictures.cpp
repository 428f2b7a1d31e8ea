#include "Desktop/Controls/Symbols/SymbolImage.h"
#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

#include <QPainter>

using namespace Qt::StringLiterals;
using Endpoint = sandbox::Sandbox::Endpoint;

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

/// Every state that needs no ssh server, light and dark, drawn by the windows themselves: no permission to
/// record the screen is needed. HARVELLON_PICTURES names the folder where the pictures are kept.
class TestPictures : public DesktopTest {
    Q_OBJECT

  public:
    TestPictures() : DesktopTest(false) {}

  private:
    static bool says(QQuickWindow* window, const QString& text) {
        bool said = false;
        heard::visit(QAccessible::queryAccessibleInterface(window), [&](QAccessibleInterface* part) {
            said = said || part->text(QAccessible::Name).startsWith(text);
        });
        return said;
    }

    /// Waits until the window is in the state that this text tells, and as light or dark as the desktop
    /// wants.
    static void take(QQuickWindow* window, const char* state, const QString& text) {
        QTRY_VERIFY2(says(window, text), state);
        for (const bool dark : {false, true}) {
            QPalette palette;
            palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
            palette.setColor(QPalette::WindowText, dark ? Qt::white : Qt::black);
            QGuiApplication::setPalette(palette);
            QImage picture;
            const auto looksRight = [&] {
                picture = window->grabWindow();
                const QImage mean = picture.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
                return !mean.isNull() && (mean.pixelColor(0, 0).lightness() < 128) == dark;
            };
            QTRY_VERIFY2(looksRight(), state);
            const QString folder = qEnvironmentVariable("HARVELLON_PICTURES");
            const QString name = QLatin1String(state) + (dark ? u"-dark.png"_s : u"-light.png"_s);
            QVERIFY(folder.isEmpty() || picture.save(folder + u'/' + name));
        }
    }

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
                const qreal points = colour == u"#1a5fb4"_s ? 2 : 1; // the ring of the chosen row
                QVERIFY(colour == Qt::white || pixels == static_cast<int>(points * ratio));
            }
        }
    }

    void everyStateIsDrawn() {
        AppState& state = *m_desktop->state;
        PanelWindow* const panel = m_desktop->openPanel();
        take(panel, "signed-out", u"Noch keine Projekte"_s);

        m_platform->setFault(Endpoint::directory, {.delay = std::chrono::seconds(4)});
        m_desktop->identity = u"erika"_s;
        QCoro::Task<> signingIn = state.parts().accounts.addAccount();
        QTRY_VERIFY(state.isLoading());
        take(panel, "loading", u"Projekte werden geladen"_s);
        m_platform->setFault(Endpoint::directory, {});
        await(std::move(signingIn));
        QTRY_VERIFY_WITH_TIMEOUT(!state.isLoading(), 10000);
        take(panel, "projects", u"Fahrradladen Speiche"_s);

        state.setSearchText(u"gibtesnicht"_s);
        take(panel, "no-hit", u"Kein Projekt passt zu"_s);
        state.setSearchText({});
        m_platform->setFault(Endpoint::directory, {.status = 500});
        state.refresh();
        QTRY_VERIFY(!state.isLoading());
        take(panel, "error", u"Projekte nicht geladen"_s);
        m_platform->setFault(
            Endpoint::directory,
            {.body = R"({"user": {"name": "Erika Beispiel", "coder": true}, "projects": []})"});
        state.refresh();
        QTRY_VERIFY(!state.isLoading());
        take(panel, "no-projects", u"Keine Projekte"_s);

        m_desktop->settings->show(state);
        take(m_desktop->settings->window(), "settings", u"Beim Anmelden starten"_s);
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestPictures>(argc, argv);
}

#include "tst_pictures.moc"

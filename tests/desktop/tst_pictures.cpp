#include "desktop/DesktopFixture.h"
#include "desktop/Heard.h"

using namespace Qt::StringLiterals;
using Endpoint = sandbox::Sandbox::Endpoint;

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

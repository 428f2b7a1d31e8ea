#include "Desktop/StatusItem/StatusSign.h"
#include "Mounting/SSHFSProcess.h"
#include "desktop/DesktopFixture.h"

#include <QWidget>

using namespace Qt::StringLiterals;
using Picture = StatusSign::Picture;

class TestStatusItem : public DesktopTest {
    Q_OBJECT

  public:
    TestStatusItem() : DesktopTest(true) {}

  private:
    /// What the item in the tray tells assistive technology after the program's name: its tool tip.
    static QString said() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->inherits("QSystemTrayIconSys"))
                return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Description).mid(17);
        }
        return u"nothing"_s;
    }

  private Q_SLOTS:

    void tellsFirstWhatMattersMost() {
        const std::tuple<StatusFacts, Picture, const char*> cases[] = {
            {{}, Picture::plain, ""},
            {{1, {}, {}}, Picture::mounted, ": 1 Projekt verbunden"},
            {{12, {}, {}}, Picture::mounted, ": 12 Projekte verbunden"},
            {{1, {u"a.de"_s}, {}}, Picture::connecting, ": Verbinde mit a.de ..."},
            {{0, {u"a.de"_s, u"b.de"_s}, {}}, Picture::connecting, ": Verbinde 2 Projekte ..."},
            {{1, {u"a.de"_s}, {}, true}, Picture::trouble, ": Anmeldung prüfen"},
            {{1, {u"a.de"_s}, {u"b.de"_s}, true}, Picture::trouble, ": Verbindung zu b.de unterbrochen"},
            {{1, {}, {u"a.de"_s, u"b.de"_s}}, Picture::trouble, ": 2 Verbindungen unterbrochen"}};
        for (const auto& [facts, picture, text] : cases)
            QCOMPARE(statusSign(facts),
                     (StatusSign{picture, u"Harvellon Connect"_s + QString::fromUtf8(text)}));
    }

    void followsTheState() {
        QTRY_COMPARE(said(), QString());
        m_desktop->signIn("erika");
        AppState::Parts parts = m_desktop->state->parts();
        const Project project = m_desktop->state->projects().constFirst();
        const QCoro::Task<> connecting = parts.connections.connectOnly(project);
        QTRY_COMPARE(said(), u": Verbinde mit %1 ..."_s.arg(project.domain));
        QTRY_COMPARE(said(), u": 1 Projekt verbunden"_s);
        parts.sshfsMounter.sessions().value(project.domain).process->kill();
        QTRY_COMPARE(said(), u": Verbindung zu %1 unterbrochen"_s.arg(project.domain));
        await(parts.connections.disconnect(project.domain, false));
        QTRY_COMPARE(said(), QString());
        parts.report.setAccountError(u"Token-Austausch fehlgeschlagen: HTTP 500"_s);
        QTRY_COMPARE(said(), u": Anmeldung prüfen"_s);
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestStatusItem>(argc, argv);
}

#include "tst_status_item.moc"

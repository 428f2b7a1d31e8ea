#include "Mounting/Setup/FuseVersions.h"
#include "State/Diagnosis/Redaction.h"
#include "StateFixture.h"

#include <QDir>
#include <QRandomGenerator>
#include <QUrl>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {
const QString home = u"/home/zoë.huber"_s;

/// The text as somebody reads it who decodes whatever can be decoded.
QString decoded(const QString& text) {
    QByteArray bytes = text.toUtf8();
    for (qsizetype at = bytes.lastIndexOf('%'); at >= 0; at = bytes.lastIndexOf('%', at - 1)) {
        const QByteArray code = bytes.mid(at + 1, 2);
        if (const QByteArray byte = QByteArray::fromHex(code);
            byte.size() == 1 && byte.toHex() == code.toLower())
            bytes.replace(at++, 3, byte); // what has been decoded may be a code again
        if (at == 0)
            break;
    }
    return QString::fromUtf8(bytes).normalized(QString::NormalizationForm_C).toCaseFolded();
}

QString percent(const QString& text, QRandomGenerator& random) {
    QString result;
    for (const char byte : text.toUtf8()) {
        const bool plain = byte > 0 && random.bounded(2) == 0;
        const QString code = QString::number(static_cast<uchar>(byte), 16).rightJustified(2, u'0');
        result += plain ? QString(QChar::fromLatin1(byte))
                        : u'%' + (random.bounded(2) == 0 ? code : code.toUpper());
    }
    return result;
}

QString escaped(const QString& text) {
    QString result;
    for (const QChar character : text)
        result += u"\\u"_s + QString::number(character.unicode(), 16).rightJustified(4, u'0');
    return result;
}

/// One of the ways in which a value reaches a log.
QString disguised(const QString& value, QRandomGenerator& random) {
    switch (random.bounded(10)) {
    case 0:
        return value.toUpper();
    case 1:
        return value.toLower();
    case 2:
        return percent(value, random);
    case 3:
        return percent(percent(value, random), random);
    case 4:
        return value.normalized(QString::NormalizationForm_D);
    case 5:
        return QUrl::toAce(value).isEmpty() ? value : QString::fromLatin1(QUrl::toAce(value)).toUpper();
    case 6:
        return escaped(value);
    case 7:
        return QString(value).replace(u' ', u'+');
    case 8:
        return QString(value).replace(u'"', u"\\\""_s);
    default:
        return value;
    }
}
} // namespace

/// The report for whoever helps: what must not be in it, and what must.
class TestDiagnosis : public StateFixture {
    Q_OBJECT

  private:
    QString report() {
        m_copied.clear();
        m_state->diagnosis()->copy();
        return QTest::qWaitFor([this] { return !m_state->diagnosis()->isBusy(); }, 20'000) ? m_copied
                                                                                           : QString();
    }

  private Q_SLOTS:

    void noSecretSlipsThrough() {
        const QList<std::pair<QString, QString>> secrets{{u"projekt"_s, u"www.müller-straße.example"_s},
                                                         {u"projekt"_s, u"xn--bcher-kva.example"_s},
                                                         {u"projekt"_s, u"a-b.example"_s},
                                                         {u"name"_s, u"Änne Großmann"_s},
                                                         {u"mail"_s, u"aenne+x@grossmann.example"_s},
                                                         {u"geheim"_s, u"tok.en-with=odd/chars"_s},
                                                         {u"account"_s, u"4711-ab"_s},
                                                         {u"pfad"_s, u"/kunden/Müller & Söhne/web"_s},
                                                         {u"benutzer"_s, u"zoë.huber"_s},
                                                         {u"projektname"_s, u"Shop \"İstanbul\""_s}};
        const QStringList glue{u" "_s, u""_s,   u"/"_s, u"@"_s, u"\""_s, u"://"_s,
                               u"."_s, u": "_s, u"%"_s, u"ß"_s, u"x"_s,  u"\n"_s};
        for (quint32 seed = 0; seed < 800; ++seed) {
            QRandomGenerator random(seed);
            Redaction redaction(home);
            for (const auto& [kind, value] : secrets)
                redaction.add(kind, value);
            QString text;
            for (int i = 0; i < 4; ++i)
                text += disguised(secrets.at(random.bounded(secrets.size())).second, random) +
                        glue.at(random.bounded(glue.size()));
            const QString result = redaction.redacted(text);
            for (const auto& [kind, value] : secrets) {
                const QStringList forms{value, QString::fromLatin1(QUrl::toAce(value)),
                                        QUrl::fromAce(value.toLatin1())};
                for (const QString& form : forms)
                    QVERIFY2(form.isEmpty() || !decoded(result).contains(decoded(form)),
                             qPrintable(u"%1: %2 in %3 of %4"_s.arg(seed).arg(form, result, text)));
                const QString form = disguised(value, random);
                QVERIFY2(redaction.redacted(form) == redaction.redacted(value), qPrintable(form));
            }
        }
    }

    void whatLooksLikeASecretIsOne_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("redacted");
        QTest::newRow("path") << u"Mount-Pfad /home/zoë.huber/Kunden/Meier ist belegt."_s
                              << u"Mount-Pfad pfad-1 ist belegt."_s;
        QTest::newRow("last path") << u"nicht gespeichert: /mnt/Kunden/A B"_s
                                   << u"nicht gespeichert: pfad-1"_s;
        QTest::newRow("program") << u"Start von /usr/bin/sshfs fehlgeschlagen."_s
                                 << u"Start von /usr/bin/sshfs fehlgeschlagen."_s;
        QTest::newRow("mail") << u"von <a.b@c.example>, a.b@c.example"_s << u"von <adresse-1>, adresse-1"_s;
        QTest::newRow("server") << u"ssh: connect to host Shop.Example port 22"_s
                                << u"ssh: connect to host server-1 port 22"_s;
        QTest::newRow("address") << u"10.0.0.17 und fe80::1%2"_s << u"adresse-1 und adresse-2%2"_s;
        QTest::newRow("token") << u"code=4/P7q&x Bearer abcd"_s << u"code=geheim-1&x Bearer geheim-2"_s;
        QTest::newRow("begun") << u"Token erneuert (sand.box1...). ssh4711@a.example"_s
                               << u"Token erneuert (geheim-1...). ssh-benutzer-1@server-1"_s;
        QTest::newRow("long") << u"eyJhbGciOiJSUzI1NiIsInR5cCI6"_s << u"geheim-1"_s;
        QTest::newRow("database")
            << u"Oeffne x DB in Sequel Ace (kunde_1)... Öffne x DB (kunde-2) über"_s
            << u"Oeffne x DB in Sequel Ace (datenbank-1)... Öffne x DB (datenbank-2) über"_s;
        QTest::newRow("words") << u"Sicherheitseinstellungen um 12:34:56: QObject::connect 3.7.3"_s
                               << u"Sicherheitseinstellungen um 12:34:56: QObject::connect 3.7.3"_s;
    }

    void whatLooksLikeASecretIsOne() {
        QFETCH(QString, text);
        QTEST(Redaction(home).redacted(text), "redacted");
    }

    void aReportOfARealState() {
        signIn("erika");
        connectTo(0);
        const OAuthManager& oauth = m_state->parts().oauth;
        const Account account = m_state->accounts().constFirst();
        m_state->parts().report.log(u"%1 %2 https://x@%3/?q=%4 %5 %6"_s.arg(
                                        *oauth.accessToken(), *oauth.refreshToken(), domain(1).toUpper(),
                                        QString::fromLatin1(QUrl::toPercentEncoding(account.displayName)),
                                        account.id, m_state->projects().constFirst().title()),
                                    ActivityLogLevel::error);
        const QString text = decoded(report());
        QStringList secrets{*oauth.accessToken(),
                            *oauth.refreshToken(),
                            account.displayName,
                            account.id,
                            account.email.value_or(u"erika"_s),
                            m_home->path()};
        for (const Project& project : m_state->projects())
            secrets += {project.domain, project.title(), project.sshLogin()};
        for (const QString& secret : secrets)
            QVERIFY2(!text.contains(decoded(secret)), qPrintable(secret + u'\n' + text));
        answer(Endpoint::directory, 500); // which empties the list
        await(m_state->parts().loading.refresh());
        await(m_state->parts().accounts.removeAccount(account.id)); // the log still tells of it
        const QString later = decoded(report());
        for (const QString& secret : secrets.mid(2))
            QVERIFY2(!later.isEmpty() && !later.contains(decoded(secret)),
                     qPrintable(secret + u'\n' + later));
        for (const char* part : {"sshfs version 3.", "openssh_", "fusermount3 version",
                                 "globalhotkeyenabled: ein", "fuse, fuse.sshfs: ~/harvellon/projekt-",
                                 "editor: wie sonst", "gemountet: ~/harvellon/projekt-", "verbunden: 1"})
            QVERIFY2(text.contains(QString::fromLatin1(part)),
                     qPrintable(QString::fromLatin1(part) + u'\n' + text));
    }

    void aReportIsSavedForItsUserAloneOrNotAtAll() {
        const auto reports = [this] {
            return QDir(m_home->path()).entryInfoList({u"Harvellon Connect Diagnose *.txt"_s});
        };
        const auto save = [this] {
            m_state->diagnosis()->save();
            QTRY_VERIFY_WITH_TIMEOUT(!m_state->diagnosis()->isBusy(), 20'000);
        };
        rlimit before{};
        ::getrlimit(RLIMIT_FSIZE, &before);
        const rlimit full{16, before.rlim_max}; // bytes: writing more fails as on a full disk
        ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &full);
        save();
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(
            m_state->diagnosis()->message().startsWith(u"Die Diagnose konnte nicht gespeichert werden: "_s));
        QVERIFY(reports().isEmpty());
        save();
        QCOMPARE(reports().size(), 1);
        QVERIFY(m_state->diagnosis()->message().endsWith(u"~/"_s + reports().constFirst().fileName()));
        QCOMPARE(reports().constFirst().permissions() & ~(QFile::ReadUser | QFile::WriteUser),
                 QFile::ReadOwner | QFile::WriteOwner);
    }

    void damagingVersionsAreWarnedOf() {
        const QString receipts = u"com.apple.pkg.Core\norg.fuse-t.core.1.0.44\n"_s;
        const std::pair<const char*, int> cases[] = {
            {"4.9.1", 0}, {"5.0.5", 1}, {"5.2.0", 2}, {"5.3.2", 1}, {"5.4.0", 0}};
        for (const auto& [version, warnings] : cases) {
            const QString receipt = u"package-id: x\nversion: %1\nvolume: /\n"_s.arg(QLatin1String(version));
            const QList<InstalledFuse> installed = installedFuse(receipts, receipt);
            QCOMPARE(installed, (QList<InstalledFuse>{{u"FUSE-T"_s, u"1.0.44"_s},
                                                      {u"macFUSE"_s, QLatin1String(version)}}));
            QCOMPARE(fuseWarnings(installed).size(), warnings);
        }
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    TestDiagnosis test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_diagnosis.moc"

#include "sandbox/Identities.h"

#include "sandbox/ssh/ProjectTrees.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <iterator>

namespace sandbox {

namespace {
constexpr qint64 firstWebspace = 4711;
constexpr int dozen = 12;

struct Named {
    const char* domain;
    const char* name;
    bool isSshType;
};

constexpr Named known[] = {
    {"www.alpenhof", "Alpenhof Buchung", true},
    {"www.kornblume", "Bäckerei Kornblume", false},
    {"www.beispiel-shop", "Beispiel Shop", true},
    {"www.chorverband-sued", "Chorverband Süd", false},
    {"www.druckerei-falke", "Druckerei Falke", true},
    {"shop.speiche", "Fahrradladen Speiche", true},
    {"www.galerie-nordlicht", "Galerie Nordlicht", false},
    {"intern.landesverband-feuerwehr-niederau-oberwiesental",
     "Landesverband der Freiwilligen Feuerwehren Niederau-Oberwiesental und Umgebung", false},
    {"www.musikschule-ahorn", "Musikschule Ahorn", true},
    {"www.praxis-winter", "Praxis Dr. Winter", false},
    {"www.reisebuero-fernweh", "Reisebüro Fernweh", true},
    {"www.stadtbuecherei-muehltal", "Stadtbücherei Mühltal", false},
    {"www.tischlerei-ebert", "Tischlerei Ebert", true},
    {"www.uhrmacher-zeller", "Uhrmacher Zeller", false},
    {"www.verein-radwege", "Verein Radwege e. V.", true},
    {"www.weingut-sonnleiten", "Weingut Sönnleiten", false},
    {"filialen.kornblume", "Kornblume Filialfinder", false},
    {"karriere.kornblume", "Kornblume Karriere", false},
    {"www.yogahaus-linde", "Yogahaus Linde", true},
    {"www.zoo-am-see", "Zoo am See", false},
    {"www.brunnenbau-hoch", "Brunnenbau Hoch", true},
    {"www.cafe-morgenrot", "Café Morgenrot", false},
    {"www.dachdecker-stein", "Dachdecker Stein", true},
    {"www.eishalle-nord", "Eishalle Nord", false},
};

HostedProject hosted(int index) {
    const Named& project = known[index];
    return {QString::fromUtf8(project.domain) + QStringLiteral(".sandbox.test"),
            QString::fromUtf8(project.name), firstWebspace + index, project.isSshType};
}

QList<HostedProject> dozenFrom(int first) {
    QList<HostedProject> projects;
    for (int i = 0; i < dozen; ++i)
        projects.append(hosted(first + i));
    return projects;
}

QList<HostedProject> invented(int count) {
    QList<HostedProject> projects;
    projects.reserve(count);
    for (int i = 0; i < count; ++i)
        projects.append(
            {QStringLiteral("www.projekt-%1.sandbox.test").arg(i, 5, 10, QLatin1Char('0')),
             QStringLiteral("%1 %2").arg(QString::fromUtf8(known[i % std::size(known)].name)).arg(i + 1),
             firstWebspace + i, i % 2 == 0});
    return projects;
}
} // namespace

QList<Identity> identities(int generated) {
    QList<Identity> all{{QStringLiteral("erika"), QStringLiteral("8f14e45f-erika"),
                         QStringLiteral("Erika Beispiel"), QStringLiteral("erika@beispiel-shop.example"),
                         QStringLiteral("Entwicklung, mit Datenbankzugang"), true, true, dozenFrom(0)},
                        {QStringLiteral("jonas"), QStringLiteral("c9f0f895-jonas"),
                         QStringLiteral("Jonas Muster"), QStringLiteral("jonas@agentur-muster.example"),
                         QStringLiteral("Entwicklung, ohne Datenbankzugang"), true, false, dozenFrom(8)},
                        {QStringLiteral("redaktion"), QStringLiteral("45c48cce-redaktion"),
                         QStringLiteral("Redaktion Kornblume"), QStringLiteral("redaktion@kornblume.example"),
                         QStringLiteral("Redaktion, kein Zugang zum Server"), false, false, dozenFrom(12)}};
    if (generated > 0) {
        const QList<HostedProject> projects = invented(generated);
        for (Identity& identity : all)
            identity.projects = projects;
    }
    return all;
}

std::optional<Identity> identityWithKey(const QList<Identity>& all, const QString& key) {
    for (const Identity& identity : all) {
        if (identity.key == key)
            return identity;
    }
    return std::nullopt;
}

QByteArray directoryAnswer(const Identity& identity, const QString& treeRoot) {
    QJsonArray projects;
    for (const HostedProject& project : identity.projects) {
        // Both names of the identifier are in use on the platform.
        const QString idKey = project.webspaceID % 3 == 0 ? QStringLiteral("ispconfig_webspace")
                                                          : QStringLiteral("webspace_id");
        projects.append(
            QJsonObject{{QStringLiteral("domain"), project.domain},
                        {QStringLiteral("name"), project.name},
                        {idKey, project.webspaceID},
                        {QStringLiteral("path"), mountedFolder(treeRoot, project)},
                        {QStringLiteral("type"),
                         project.isSshType ? QStringLiteral("ssh") : QStringLiteral("harvellon")}});
    }
    const QJsonObject user{{QStringLiteral("name"), identity.name},
                           {QStringLiteral("reseller"), QStringLiteral("Sandbox")},
                           {QStringLiteral("coder"), identity.coder},
                           {QStringLiteral("allow_database_connect"), identity.allowDatabaseConnect}};
    return QJsonDocument(QJsonObject{{QStringLiteral("user"), user}, {QStringLiteral("projects"), projects}})
        .toJson(QJsonDocument::Compact);
}

} // namespace sandbox

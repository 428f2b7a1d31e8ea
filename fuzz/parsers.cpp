#include "Actions/Rules/DatabaseCredentials.h"
#include "Actions/Rules/GrepOutput.h"
#include "Actions/Rules/SearchDomain.h"
#include "BrowserTab/SessionFile.h"
#include "CommandLine/ProjectChoice.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"
#include "Directory/PlainDomain.h"
#include "Directory/StoredProjects.h"
#include "SignIn/CallbackRequest.h"
#include "SignIn/IdentityClaims.h"
#include "SignIn/OAuthError.h"
#include "SignIn/TokenResponse.h"
#include "System/Network/HttpAnswerReader.h"
#include "System/Requests/Request.h"
#include "Updates/SignedFeed.h"
#include "Updates/UpdateFeed.h"

#include <QUrl>

#include <cstdint>

using namespace Qt::StringLiterals;

/// One function for each parser, by the name of its corpus.
namespace parsers {
void callback_request(const QByteArray& input) {
    queryOf(input);
}

void token_answer(const QByteArray& input) {
    try {
        TokenResponse::parse(input);
    } catch (const OAuthError&) {
    }
}

void identity_claims(const QByteArray& input) {
    IdentityClaims::read(QString::fromUtf8(input));
}

void directory(const QByteArray& input) {
    try {
        const QList<Project> projects = ApplicationsResponse::decode(input).projects;
        for (const Project& project : projects) {
            if (project.webspaceID != QString::number(project.webspaceID.toLongLong()) ||
                !project.path.startsWith(u'/'))
                qFatal("a forged login");
        }
    } catch (const DecodingError&) {
    }
}

void domain(const QByteArray& input) {
    const QString name = QString::fromUtf8(input);
    if (!isPlainDomain(name))
        return;
    const QUrl url(u"ssh://ssh1@"_s + name, QUrl::StrictMode);
    if (!isPlainSite(name) || printableDomain(name) != name || name.contains(u'/') ||
        name.contains(u".."_s) || QUrl::toAce(url.host()) != QUrl::toAce(name))
        qFatal("not the same host for all");
}

void stored_projects(const QByteArray& input) {
    const QList<Project> projects = projectsStoredIn(input);
    if (projectsStoredIn(storedProjects(projects)) != projects)
        qFatal("stored otherwise than read");
}

void configuration(const QByteArray& input) {
    const QString text = QString::fromUtf8(input);
    credentialsIn(text, ProjectType::ssh);
    credentialsIn(text, ProjectType::harvellon);
}

void grep_output(const QByteArray& input) {
    const SearchHits found = hitsIn(input, u"/mount"_s);
    for (const SearchHit& hit : found.hits) {
        const QString line = hit.asLine();
        if (!hit.path.startsWith(u"/mount/"_s) || hit.path.contains(u"/../"_s) || line.contains(u'\n') ||
            line.count(u':') < 2 || line.section(u':', 1, 1).toLongLong() != hit.line)
            qFatal("a forged hit");
    }
}

void tab_address(const QByteArray& input) {
    searchDomain(QString::fromUtf8(input));
}

void session_file(const QByteArray& input) {
    windowsIn(input);
}

void signed_feed(const QByteArray& input) {
    // The public key of the corpus, whose private half is gone.
    static const auto key = QByteArray::fromBase64("Ov2tiQwB3FvcewAv5dy+r/DdnubrPj6u/Qv9Tp0nV2E=");
    const std::optional<QByteArray> text = signedPart(input, key);
    if (text && *text != "a feed\n")
        qFatal("a forged feed");
}

void update_feed(const QByteArray& input) {
    try {
        const UpdateFeed read = UpdateFeed::read(input, u"1.0.0"_s);
        read.requireFresh({}, read.issued);
        if (read.newer && read.newer->address.scheme() != u"https"_s)
            qFatal("not https");
    } catch (const FeedError&) {
    }
}

void http_answer(const QByteArray& input) {
    constexpr qint64 limit = 1000;
    HttpAnswerReader whole(limit);
    whole.read(input);
    const HttpAnswerReader::State atOnce = whole.end();
    HttpAnswerReader reader(limit);
    for (const char byte : input)
        reader.read(QByteArray(1, byte));
    if (reader.end() != atOnce ||
        (atOnce == HttpAnswerReader::State::complete && reader.body() != whole.body()))
        qFatal("the answer depends on how it arrives");
}

void request(const QByteArray& input) {
    static_cast<void>(Answer::parse(input));
    try {
        const Request read = Request::parse(input);
        const QByteArray line = read.toLine();
        if (line.indexOf('\n') != line.size() - 1)
            qFatal("not one line");
        if (line.size() <= Request::longest && !(Request::parse(line) == read))
            qFatal("another request than was read");
    } catch (const RequestError&) {
    }
}

void link(const QByteArray& input) {
    const QString text = QString::fromUtf8(input);
    const QString domain = domainInLink(text);
    if (!domain.isEmpty() && (!isPlainDomain(domain) || !text.contains(domain)))
        qFatal("a forged domain");
    QList<Project> projects(2);
    projects[0].domain = u"www.a.de"_s;
    projects[1].domain = text.left(100);
    try {
        static_cast<void>(chosenProject(projects, text));
    } catch (const RequestError&) {
    }
}
} // namespace parsers

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    parsers::FUZZED(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}

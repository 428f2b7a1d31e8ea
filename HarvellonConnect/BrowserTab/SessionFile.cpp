#include "BrowserTab/SessionFile.h"

#include <QMap>
#include <QtEndian>

#include <algorithm>

namespace {
constexpr qsizetype headerSize = 8;
/// The two versions that are not encrypted; they differ in a mark behind the first commands.
constexpr qint32 knownVersions[] = {1, 3};

/// What Chrome writes down, as far as it decides which page is in front. The numbers are those of the file.
enum class Command : quint8 {
    tabWindow = 0,
    tabIndex = 2,
    historyCutBehind = 5,
    navigation = 6,
    selectedNavigation = 7,
    selectedTab = 8,
    historyCutBefore = 11,
    tabClosed = 16,
    windowClosed = 17,
    activeWindow = 20,
    historyCut = 24
};

/// Reads little-endian values one after the other; beyond the end everything is zero and `ok` is false.
class Reader {
  public:
    explicit Reader(QByteArrayView bytes) : m_bytes(bytes) {}

    qint32 number() {
        const QByteArrayView bytes = take(sizeof(qint32));
        return bytes.isEmpty() ? 0 : qFromLittleEndian<qint32>(bytes.data());
    }

    /// A length in characters of `width` bytes, the characters, and what fills up to four bytes.
    QByteArrayView text(qsizetype width) {
        const qsizetype length = width * number();
        const QByteArrayView bytes = take(length);
        take((4 - length % 4) % 4);
        return bytes;
    }

    [[nodiscard]] bool ok() const { return m_ok; }

  private:
    QByteArrayView take(qsizetype count) {
        if (count < 0 || count > m_bytes.size()) {
            m_ok = false;
            m_bytes = {};
            return {};
        }
        const QByteArrayView taken = m_bytes.first(count);
        m_bytes = m_bytes.sliced(count);
        return taken;
    }

    QByteArrayView m_bytes;
    bool m_ok = true;
};

struct Page {
    QString title;
    QString address;
};

struct Tab {
    qint32 window = 0;
    qint32 index = 0;
    qint32 selectedPage = 0;
    QMap<qint32, Page> history;
};

class Session {
  public:
    void apply(Command command, QByteArrayView content) {
        Reader reader(content);
        if (command == Command::navigation)
            reader.number(); // the size of what follows
        const qint32 id = reader.number();
        const qint32 value = reader.number();
        switch (command) {
        case Command::tabWindow: // here the window comes first
            m_tabs[value].window = id;
            m_selectedTabs[id];
            break;
        case Command::tabIndex:
            m_tabs[id].index = value;
            break;
        case Command::navigation:
            addPage(m_tabs[id], value, reader);
            break;
        case Command::selectedNavigation:
            m_tabs[id].selectedPage = value;
            break;
        case Command::selectedTab:
            m_selectedTabs[id] = value;
            break;
        case Command::historyCutBehind:
            m_tabs[id].history.erase(m_tabs[id].history.lowerBound(value), m_tabs[id].history.end());
            break;
        case Command::historyCutBefore:
            cut(m_tabs[id], 0, value);
            break;
        case Command::historyCut:
            cut(m_tabs[id], value, reader.number());
            break;
        case Command::tabClosed:
            m_tabs.remove(id);
            break;
        case Command::windowClosed:
            m_selectedTabs.remove(id);
            break;
        case Command::activeWindow:
            m_activeWindow = id;
            break;
        }
    }

    [[nodiscard]] QList<SavedWindow> windows() const {
        QList<SavedWindow> shown;
        for (auto window = m_selectedTabs.begin(); window != m_selectedTabs.end(); ++window) {
            const Page page = frontPage(window.key(), *window);
            if (!page.address.isEmpty())
                shown.append({page.title, page.address, window.key() == m_activeWindow});
        }
        return shown;
    }

  private:
    static void addPage(Tab& tab, qint32 index, Reader& reader) {
        const QString address = QString::fromUtf8(reader.text(1));
        const QByteArrayView title = reader.text(sizeof(char16_t));
        if (!reader.ok())
            return;
        QString text;
        for (qsizetype i = 0; i + 1 < title.size(); i += 2)
            text.append(QChar(qFromLittleEndian<char16_t>(title.data() + i)));
        tab.history.insert(index, {text, address});
    }

    /// Takes `count` pages from `first` on out of the history; those behind move up.
    static void cut(Tab& tab, qint32 first, qint32 count) {
        if (first < 0 || count <= 0)
            return;
        QMap<qint32, Page> kept;
        for (auto page = tab.history.begin(); page != tab.history.end(); ++page) {
            if (page.key() < first)
                kept.insert(page.key(), *page);
            else if (page.key() - first >= count)
                kept.insert(page.key() - count, *page);
        }
        tab.history = kept;
        if (tab.selectedPage >= first)
            tab.selectedPage = std::max(first, tab.selectedPage - count);
    }

    [[nodiscard]] Page frontPage(qint32 window, qint32 selectedTab) const {
        QList<Tab> tabs;
        for (const Tab& tab : m_tabs) {
            if (tab.window == window)
                tabs.append(tab);
        }
        // The selected one is counted among those that are left, in the order on the screen.
        std::stable_sort(tabs.begin(), tabs.end(),
                         [](const Tab& left, const Tab& right) { return left.index < right.index; });
        const Tab tab = tabs.value(selectedTab);
        return tab.history.value(tab.selectedPage);
    }

    QMap<qint32, Tab> m_tabs;
    QMap<qint32, qint32> m_selectedTabs; ///< by window
    qint32 m_activeWindow = 0;
};

bool isKnown(quint8 command) {
    constexpr Command all[] = {
        Command::tabWindow,          Command::tabIndex,     Command::historyCutBehind, Command::navigation,
        Command::selectedNavigation, Command::selectedTab,  Command::historyCutBefore, Command::tabClosed,
        Command::windowClosed,       Command::activeWindow, Command::historyCut};
    return std::any_of(std::begin(all), std::end(all),
                       [command](Command known) { return static_cast<quint8>(known) == command; });
}
} // namespace

std::optional<QList<SavedWindow>> windowsIn(const QByteArray& sessionFile) {
    const QByteArrayView bytes(sessionFile);
    if (bytes.size() < headerSize || !bytes.startsWith("SNSS"))
        return std::nullopt;
    const auto version = qFromLittleEndian<qint32>(bytes.sliced(4).data());
    if (std::find(std::begin(knownVersions), std::end(knownVersions), version) == std::end(knownVersions))
        return std::nullopt;
    Session session;
    for (qsizetype at = headerSize; bytes.size() - at > qsizetype(sizeof(quint16));) {
        const qsizetype size = qFromLittleEndian<quint16>(bytes.sliced(at).data()); // command and content
        at += sizeof(quint16);
        if (size == 0 || size > bytes.size() - at)
            break;
        const auto command = static_cast<quint8>(bytes.at(at));
        if (isKnown(command))
            session.apply(static_cast<Command>(command), bytes.sliced(at + 1, size - 1));
        at += size;
    }
    return session.windows();
}

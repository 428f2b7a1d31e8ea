#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

/// Tells when the way to the network has changed: another address, another default route, reachable again.
/// It says neither what has changed nor whether a server answers. Loopback, link-local addresses and renewed
/// lifetimes do not count. Where the system refuses to tell, the log says so once and nothing is told. Main
/// thread.
class NetworkMonitor : public QObject {
    Q_OBJECT

  public:
    /// `quiet`: changes that follow one another within this time are told once, after the last. Changes that
    /// do not end are told every two seconds.
    explicit NetworkMonitor(std::chrono::milliseconds quiet = std::chrono::milliseconds(300),
                            QObject* parent = nullptr);
    ~NetworkMonitor() override;

    /// Whether this machine has an address beside loopback and link-local ones.
    [[nodiscard]] static bool hasNetwork();

  Q_SIGNALS:
    /// Comes from the event loop, never from inside a call.
    void changed();

  private:
    /// Calls `onChange` at each change for as long as the returned object lives. Each desktop has its own.
    static std::unique_ptr<QObject> watch(std::function<void()> onChange);

    void noteChange();
    void tell();

    QTimer m_settled; ///< starts anew with each change
    QTimer m_overdue; ///< runs from the first change that has not been told
    std::unique_ptr<QObject> m_watch;
};

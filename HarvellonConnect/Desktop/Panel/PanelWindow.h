#pragma once

#include <QElapsedTimer>
#include <QQuickView>

/// The window of the main panel: a frameless popover that hides when it loses the focus, or an ordinary small
/// window if there is no tray. Main thread.
class PanelWindow : public QQuickView {
    Q_OBJECT

  public:
    enum class Kind { popover, window };
    /// In logical pixels; less high if the screen has no room for it.
    static constexpr QSize panelSize{640, 660};

    explicit PanelWindow(QQmlEngine* engine);

    /// Does nothing while the window is visible.
    void setKind(Kind kind);

    [[nodiscard]] Kind kind() const { return m_kind; }

    /// Gives the panel its usual height, or less if `availableHeight` (logical pixels, which must also hold
    /// the frame of an ordinary window) is too small.
    void fitInto(int availableHeight);

    /// Renders the hidden panel once, so that it appears without delay when it is shown.
    void preRender();
    /// Whether the popover lost the focus a moment ago. If that was by a click on the status item, the same
    /// click must not open the panel again.
    [[nodiscard]] bool closedJustNow() const;

    /// Whether the panel, as an ordinary window, is shown without the keyboard: the user has gone on to
    /// another window, which may cover it.
    [[nodiscard]] bool isLeftBehind() const;
    /// Brings a shown panel to the front, with the keyboard where the desktop allows that.
    void comeForward();

  protected:
    bool event(QEvent* event) override;

  private:
    void activeHasChanged();
    void setFixedSize(const QSize& size);

    Kind m_kind = Kind::popover;
    QElapsedTimer m_sinceFocusLoss;
};

/// A popover needs a tray, and a desktop where windows may position themselves, unlike Wayland.
[[nodiscard]] PanelWindow::Kind panelKind(bool trayAvailable, const QString& platform);

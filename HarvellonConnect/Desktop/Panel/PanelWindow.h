#pragma once

#include <QElapsedTimer>
#include <QQuickView>

/// The window of the main panel: a popover without a frame that closes when the user turns elsewhere, or,
/// where there is no bar to hang from, an ordinary small window.
class PanelWindow : public QQuickView {
    Q_OBJECT

  public:
    enum class Kind { popover, window };
    /// Where the screen has room for it.
    static constexpr QSize panelSize{640, 660};

    explicit PanelWindow(QQmlEngine* engine);

    /// Hidden windows only: a shown one keeps its kind.
    void setKind(Kind kind);

    [[nodiscard]] Kind kind() const { return m_kind; }

    /// Makes the panel as tall as it should be, or as `room` allows, in which an ordinary window has its
    /// frame too.
    void fitInto(int room);

    /// Draws the hidden panel once, so that nothing is left to be made when it is shown.
    void warm();
    /// The click that took the focus away may be on the status item: it must not open the panel again.
    [[nodiscard]] bool closedJustNow() const;

  protected:
    bool event(QEvent* event) override;

  private:
    void activeHasChanged();
    void setFixedSize(const QSize& size);

    Kind m_kind = Kind::popover;
    QElapsedTimer m_sinceFocusLoss;
};

/// A popover needs a bar, and a desktop that lets windows place themselves.
[[nodiscard]] PanelWindow::Kind panelKind(bool trayAvailable, const QString& platform);

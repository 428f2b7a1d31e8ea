#pragma once

#include <QQuickView>
#include <QString>
#include <QVariantMap>

class QmlViews;

/// An alert as a window of its own in the middle of the screen, as large as its view at any time. Main
/// thread.
class AlertWindow : public QQuickView {
    Q_OBJECT

  public:
    /// `view`: its name, see QmlViews::address. `views` outlives this.
    AlertWindow(QmlViews& views, const QString& view, const QVariantMap& properties);

    /// Shows the alert in front of all other windows.
    void present();

  Q_SIGNALS:
    /// The user has closed the window without an answer.
    void dismissed();

  protected:
    bool event(QEvent* event) override;

  private:
    void fit();
};

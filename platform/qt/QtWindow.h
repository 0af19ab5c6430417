#pragma once

#include "platform/NotificationCenter.h"
#include "platform/Window.h"

#include <QDialog>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace letterloft {

// Whether a sheet keeps mouse and keys from the widget's window.
bool isBelowSheet(const QWidget& widget);

// A top-level widget as a window of the program: manager, help, small menu window. Whether the user or the program
// closes it, the notification centre is told first, once. The end of the program tells nobody.
class QtWindow final : public QObject, public Window {
public:
    QtWindow(std::unique_ptr<QWidget> widget, NotificationCenter& notifications);
    ~QtWindow() override;

    void makeKeyAndOrderFront() override;
    void close() override;
    void endSheet() override;

    QWidget& widget() { return *widget_; }

    // How large a window on the same screen may be: leaves some for its frame and title bar.
    static QSize roomFor(const QWidget& window);

    // Runs before each closing and before the end of the program, for what must not outlast the window.
    void beforeClosing(std::function<void()> handler);

    // Shows the dialog as a window-modal sheet, even if the window itself is hidden. `answered` runs once, later, when
    // the dialog is done; the dialog is still there then. False, and the dialog gone, if a sheet is attached already.
    bool beginSheet(std::unique_ptr<QDialog> sheet, std::function<void()> answered);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void prepareToClose();
    void prepareToEnd();
    void fitToScreen();

    std::unique_ptr<QWidget> widget_;
    NotificationCenter& notifications_;
    std::vector<std::function<void()>> beforeClosing_;
    QPointer<QDialog> sheet_;
    std::optional<QPoint> placeBefore_; // once it has been shown
    bool closing_ = false;
    bool ending_ = false;
};

} // namespace letterloft

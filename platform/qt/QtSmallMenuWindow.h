#pragma once

#include "platform/NotificationCenter.h"
#include "platform/qt/QtMenu.h"
#include "platform/qt/QtMenuListModel.h"
#include "platform/qt/QtTrayHost.h"
#include "platform/qt/QtWindow.h"

#include <QLabel>
#include <QListView>
#include <QObject>
#include <QTimer>

#include <memory>

namespace letterloft {

// The status menu in a small window: when no status bar has been there for ten seconds, until one takes the item, and
// whenever the user asks for the program by starting it again. Nothing of it is made before it is first shown.
class QtSmallMenuWindow final : public QObject {
public:
    QtSmallMenuWindow(QtMenu& menu, QtTrayHost& host, NotificationCenter& notifications);

    // Shows it on top, with a sentence saying why.
    void showAsAsked();

    // The same for a call over the bus, which may be the one that started the program: as long as it is not known
    // whether a status bar is there, nothing is shown.
    void showAsActivated();

private:
    void hostChanged();
    void show(const QString& why);
    void makeWindow();
    void keepCurrentRow();
    bool eventFilter(QObject* watched, QEvent* event) override;

    QtMenu& menu_;
    QtTrayHost& host_;
    NotificationCenter& notifications_;
    QTimer patience_;

    std::unique_ptr<QtMenuListModel> model_;
    std::unique_ptr<QtWindow> window_;
    QLabel* why_ = nullptr;
    QListView* list_ = nullptr;
};

} // namespace letterloft

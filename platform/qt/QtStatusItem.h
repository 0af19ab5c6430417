#pragma once

#include "platform/StatusItem.h"
#include "platform/qt/QtMenuDoor.h"
#include "platform/qt/QtMenuView.h"
#include "platform/qt/QtTrayHost.h"

#include <QObject>
#include <QString>
#include <QSystemTrayIcon>

#include <functional>
#include <memory>

namespace letterloft {

// A QSystemTrayIcon, made when the first status bar is there. Qt itself shows it again in one that comes later.
class QtStatusItem final : public QObject, public StatusItem {
public:
    QtStatusItem(QtTrayHost& host, std::function<void()> showMenuElsewhere);
    ~QtStatusItem() override;

    void setHighlightMode(bool highlights) override;
    void setEnabled(bool enabled) override;
    void setToolTip(const std::string& text) override;
    void setMenu(Menu& menu) override;
    void setImage(std::shared_ptr<const Image> image) override;
    void setAlternateImage(std::shared_ptr<const Image> image) override;

private:
    void hostChanged();
    void makeIcon();
    void attachMenu();
    void showToolTip();
    void showImage();
    void popUpMenu();
    void menuOpened(bool closingIsTold);
    void menuClosed();

    QtTrayHost& host_;
    std::function<void()> showMenuElsewhere_;
    bool highlights_ = false;
    bool enabled_ = true;
    QString toolTip_;
    QtMenu* menu_ = nullptr;
    std::shared_ptr<const Image> image_;
    std::shared_ptr<const Image> alternateImage_;

    std::unique_ptr<QtMenuView> contextMenu_; // the one that the status bar opens
    std::unique_ptr<QtMenuView> popup_;       // the one that a click opens here
    std::unique_ptr<QSystemTrayIcon> icon_;
    std::unique_ptr<QtMenuDoor> door_; // before the menu on the bus
    bool menuIsOpen_ = false;
    bool hostTellsOfClosing_ = false;
};

} // namespace letterloft

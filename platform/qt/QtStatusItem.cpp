#include "platform/qt/QtStatusItem.h"

#include "platform/qt/QtImage.h"
#include "platform/qt/QtNamedIcon.h"
#include "platform/qt/QtReadablePalette.h"
#include "platform/qt/QtText.h"

#include <QCursor>
#include <QGuiApplication>

#include <utility>

namespace letterloft {

namespace {

const auto symbolicName = QStringLiteral("org.letterloft.Letterloft-symbolic");

} // namespace

QtStatusItem::QtStatusItem(QtTrayHost& host, std::function<void()> showMenuElsewhere)
    : host_{host}, showMenuElsewhere_{std::move(showMenuElsewhere)} {
    connect(&host_, &QtTrayHost::changed, this, [this] { hostChanged(); });
    if (host_.isThere()) makeIcon();
}

QtStatusItem::~QtStatusItem() = default;

void QtStatusItem::setHighlightMode(bool highlights) {
    highlights_ = highlights;
    showImage();
}

void QtStatusItem::setEnabled(bool enabled) {
    enabled_ = enabled;
    if (contextMenu_) contextMenu_->setEmpty(!enabled_);
}

void QtStatusItem::setToolTip(const std::string& text) {
    toolTip_ = toQt(text);
    showToolTip();
}

void QtStatusItem::setMenu(Menu& menu) {
    menu_ = dynamic_cast<QtMenu*>(&menu);
    if (icon_) attachMenu();
}

void QtStatusItem::setImage(std::shared_ptr<const Image> image) {
    image_ = std::move(image);
    showImage();
}

void QtStatusItem::setAlternateImage(std::shared_ptr<const Image> image) {
    alternateImage_ = std::move(image);
    showImage();
}

void QtStatusItem::hostChanged() {
    // Another panel may have other habits, and a menu that was open went with the old one.
    hostTellsOfClosing_ = false;
    menuIsOpen_ = false;
    if (!icon_) makeIcon();
    showImage();
}

void QtStatusItem::makeIcon() {
    icon_ = std::make_unique<QSystemTrayIcon>();
    connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger) popUpMenu();
    });
    showImage();
    showToolTip();
    if (menu_) attachMenu();
    icon_->show();
}

void QtStatusItem::attachMenu() {
    contextMenu_ = std::make_unique<QtMenuView>(*menu_);
    contextMenu_->setEmpty(!enabled_);
    popup_.reset();
    icon_->setContextMenu(&contextMenu_->widget());
    if (host_.protocol() == QtTrayHost::Protocol::bus) door_ = std::make_unique<QtMenuDoor>();
    contextMenu_->update(); // only now it is known who draws it
    contextMenu_->follow();
    const bool isDrawnHere = host_.protocol() != QtTrayHost::Protocol::bus;
    connect(&contextMenu_->widget(), &QMenu::aboutToShow, this,
            [this, isDrawnHere] { menuOpened(isDrawnHere || hostTellsOfClosing_); });
    connect(&contextMenu_->widget(), &QMenu::aboutToHide, this, [this] {
        hostTellsOfClosing_ = true;
        menuClosed();
    });
}

void QtStatusItem::showToolTip() {
    if (!icon_) return;
    // Only Qt's own tool tip takes a text for HTML when it looks like it.
    icon_->setToolTip(host_.protocol() == QtTrayHost::Protocol::bus ? toolTip_ : plainToolTip(toolTip_));
}

void QtStatusItem::showImage() {
    if (!icon_) return;
    const bool alternates = highlights_ && menuIsOpen_ && alternateImage_;
    const QIcon icon = QtImage::iconOf(alternates ? alternateImage_ : image_);
    icon_->setIcon(alternates ? icon : withSymbolicName(icon, symbolicName));
}

void QtStatusItem::popUpMenu() {
    if (!menu_ || !enabled_) return;
    // Wayland refuses a popup without a parent.
    if (QGuiApplication::platformName() != QLatin1String{"xcb"}) return showMenuElsewhere_();
    if (!popup_) {
        popup_ = std::make_unique<QtMenuView>(*menu_);
        popup_->widget().setPalette(withReadablePaleTexts(popup_->widget().palette()));
        connect(&popup_->widget(), &QMenu::aboutToShow, this, [this] { menuOpened(true); });
        connect(&popup_->widget(), &QMenu::aboutToHide, this, [this] { menuClosed(); });
    }
    popup_->update();
    popup_->widget().popup(QCursor::pos());
}

// Where the closing is not told, the alternate image would stay.
void QtStatusItem::menuOpened(bool closingIsTold) {
    menuIsOpen_ = closingIsTold;
    if (closingIsTold) showImage();
}

void QtStatusItem::menuClosed() {
    if (std::exchange(menuIsOpen_, false)) showImage();
}

} // namespace letterloft

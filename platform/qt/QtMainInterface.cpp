#include "platform/qt/QtMainInterface.h"

#include "platform/qt/QtText.h"
#include "ui_MainMenu.h"

#include <QMenu>

namespace letterloft {

void QtMainInterface::load(QtMenu& menu, const Actions& actions) {
    QMenu described;
    Ui::MainMenu{}.setupUi(&described);
    for (const QAction* const item : described.actions())
        menu.addCommand(fromQt(item->text()), actions.at(fromQt(item->property("operation").toString())));
}

} // namespace letterloft

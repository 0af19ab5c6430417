#include <QApplication>
#include <QIcon>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>

// The least that a status item with a menu takes with this Qt.
int main(int argc, char** argv) {
    const QApplication application{argc, argv};
    QPixmap picture{22, 22};
    picture.fill(Qt::darkBlue);
    QMenu menu;
    for (const char* const title : {"One", "Two", "Quit"})
        menu.addAction(QString::fromLatin1(title));
    QSystemTrayIcon item{QIcon{picture}};
    item.setContextMenu(&menu);
    item.show();
    return QApplication::exec();
}

#pragma once

#include "platform/linux/InstalledApplications.h"
#include "platform/qt/QtFileChooser.h"

#include <QDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <vector>

namespace letterloft {

// Chooses an application of this desktop: one of the installed ones, which can be searched, or, by browsing, a desktop
// entry, a bundle, an AppImage or another executable.
class QtApplicationChooser final : public QDialog {
public:
    // What is wanted is said as to the chooser to browse with, which starts in that folder.
    QtApplicationChooser(const QtFileChooser::Wanted& wanted,
                         const std::vector<InstalledApplications::Application>& applications);

    // Absolute; empty until the dialog was accepted.
    QString chosen() const { return chosen_; }

    void accept() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fill(std::vector<InstalledApplications::Application> applications);
    void layOut();
    void search(const QString& text);
    void browse();

    QtFileChooser::Wanted wanted_;
    QLineEdit* search_;
    QListWidget* list_;
    QPushButton* confirm_;
    QString chosen_;
};

} // namespace letterloft

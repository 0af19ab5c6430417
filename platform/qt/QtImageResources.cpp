#include "platform/qt/QtImageResources.h"

#include "platform/qt/QtImage.h"
#include "platform/qt/QtText.h"

#include <QImageReader>
#include <QPixmap>

// The resources are part of a static library; this may stand in no namespace.
static void useResources() { Q_INIT_RESOURCE(resources); }

namespace letterloft {

QtImageResources::QtImageResources() { useResources(); }

std::shared_ptr<const Image> QtImageResources::imageNamed(const std::string& name) const {
    if (const auto known = loaded_.find(name); known != loaded_.end()) return known->second;
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48}) {
        // Told the format, and to believe it, Qt loads none of its image plug-ins.
        QImageReader reader{QStringLiteral(":/images/%1-%2.png").arg(toQt(name)).arg(size), "png"};
        reader.setAutoDetectImageFormat(false);
        const QPixmap picture = QPixmap::fromImageReader(&reader);
        if (picture.isNull()) return nullptr;
        icon.addPixmap(picture);
        icon.addPixmap(picture, QIcon::Disabled); // the current account can't be chosen, and its mark is to be seen
    }
    const QString meaning = name == "mailbox" ? QStringLiteral("current account") : QString{};
    return loaded_[name] = std::make_shared<QtImage>(icon, meaning);
}

} // namespace letterloft

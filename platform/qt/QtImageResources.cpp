#include "platform/qt/QtImageResources.h"

#include "platform/qt/QtImage.h"
#include "platform/qt/QtText.h"

#include <QFile>

// The resources are part of a static library; this may stand in no namespace.
static void useResources() { Q_INIT_RESOURCE(resources); }

namespace letterloft {

QtImageResources::QtImageResources() { useResources(); }

std::shared_ptr<const Image> QtImageResources::imageNamed(const std::string& name) const {
    if (const auto known = loaded_.find(name); known != loaded_.end()) return known->second;
    const QString file = QStringLiteral(":/images/%1.svg").arg(toQt(name));
    if (!QFile::exists(file)) return nullptr;
    return loaded_[name] = std::make_shared<QtImage>(QIcon{file});
}

} // namespace letterloft

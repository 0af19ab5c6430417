#pragma once

#include <QIcon>
#include <QString>

namespace letterloft {

// The pictures of `icon`, under the name of an icon that a panel may show instead, in the colour of its own text. The
// name is given only if that icon is installed; nothing is loaded for it here.
QIcon withSymbolicName(const QIcon& icon, const QString& name);

} // namespace letterloft

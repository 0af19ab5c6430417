#pragma once

#include "platform/Status.h"
#include "platform/linux/FileSystemCalls.h"

#include <string>

namespace letterloft {

enum class ReadOnlyFolders { respected, madeWritable };

// Removes what is called `name` in `folder`, with all it holds; never follows a link, never enters what is mounted.
// Stops at the first thing that can't be removed. `folderPath` is for the failure's sentence.
Status removeTree(FileSystemCalls& calls, int folder, const std::string& folderPath, const std::string& name,
                  ReadOnlyFolders readOnlyFolders);

} // namespace letterloft

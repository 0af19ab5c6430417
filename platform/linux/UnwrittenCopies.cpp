#include "platform/linux/UnwrittenCopies.h"

#include <cerrno>

namespace letterloft {

int UnwrittenCopies::add(OpenFile copy, std::uint64_t size) {
    if (size > largest) return copy.close();
    copies_.push_back(std::move(copy));
    return copies_.size() < limit ? 0 : closeAll();
}

int UnwrittenCopies::closeAll() {
    for (const OpenFile& copy : copies_)
        if (startWriting(copy.get()) != 0) return -1;
    for (OpenFile& copy : copies_)
        if (copy.close() != 0) return -1;
    copies_.clear();
    return 0;
}

// What a file system can't do ahead it does at the sync.
int UnwrittenCopies::startWriting(int file) {
    if (calls_.sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE) == 0) return 0;
    return errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP || errno == ESPIPE ? 0 : -1;
}

} // namespace letterloft

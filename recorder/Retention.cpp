#include "Retention.h"

#include "Log.h"

#include <stdexcept>

namespace recorder {

void Retention::applyIfDue(TimePoint now) {
    if (now < nextCheck_)
        return;
    nextCheck_ = now + kInterval;
    const int64_t cutoff = std::chrono::duration_cast<Milliseconds>((now - keep_).time_since_epoch()).count();
    try {
        const std::vector<std::string> folders = index_.removeStartedBefore(cutoff);
        for (const std::string& folder : folders)
            removeFolder(folder);
        if (!folders.empty())
            log::info() << "Removed " << folders.size() << " calls older than the retention period";
    } catch (const std::runtime_error& error) {
        log::error() << "Cannot remove old calls: " << error.what();
    }
}

// Only a plain name in the output folder is removed, whatever the database says.
void Retention::removeFolder(const std::string& name) const {
    const std::filesystem::path folder(name);
    if (name.empty() || folder.has_parent_path() || name == "." || name == ".." || folder.is_absolute()) {
        log::warn() << "Not removing \"" << name << "\": not a call folder";
        return;
    }
    std::error_code error;
    std::filesystem::remove_all(root_ / folder, error);
    if (error)
        log::warn() << "Cannot remove " << (root_ / folder).string() << ": " << error.message();
}

}  // namespace recorder

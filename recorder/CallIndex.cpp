#include "CallIndex.h"

#include "SqliteCallIndex.h"

namespace recorder {

std::unique_ptr<CallIndex> makeCallIndex(const std::string& url) {
    const std::string sqlite = "sqlite:";
    if (url.compare(0, sqlite.size(), sqlite) == 0 && url.size() > sqlite.size())
        return std::make_unique<SqliteCallIndex>(url.substr(sqlite.size()));
    return nullptr;
}

}  // namespace recorder

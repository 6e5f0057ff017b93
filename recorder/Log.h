#pragma once

#include <sstream>

namespace recorder::log {

enum class Level { Debug, Info, Warn, Error };

void setVerbose(bool verbose);  // Debug lines are written only when verbose

// One log line on stderr, timestamped, written whole when the object goes out of scope:
//   log::info() << "Sniffer connected from " << peer;
class Line {
public:
    explicit Line(Level level);
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    ~Line();

    template <class T>
    Line& operator<<(const T& value) {
        if (enabled_)
            text_ << value;
        return *this;
    }

private:
    Level level_;
    bool enabled_;
    std::ostringstream text_;
};

inline Line debug() {
    return Line(Level::Debug);
}
inline Line info() {
    return Line(Level::Info);
}
inline Line warn() {
    return Line(Level::Warn);
}
inline Line error() {
    return Line(Level::Error);
}

}  // namespace recorder::log

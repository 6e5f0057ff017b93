#include "h323/DecodeStatus.h"

namespace h323 {

const char* statusName(DecodeStatus status) {
    switch (status) {
    case DecodeStatus::Ok: return "ok";
    case DecodeStatus::Truncated: return "truncated";
    case DecodeStatus::Invalid: return "invalid";
    case DecodeStatus::TooDeep: return "too deep";
    case DecodeStatus::TooLarge: return "too large";
    }
    return "unknown";
}

}  // namespace h323

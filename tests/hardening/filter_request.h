#pragma once

#include <nlohmann/json.hpp>

namespace hardening {

// Attaches each kind of filter that reads data files to the files that a request names ("xyd",
// "pal", "gpl", "fla", "gpm", "iop"), pulls the signal of so many samples ("length") at
// "interval_ms", and tells of each what came: how many samples, how many of them are not 0, and a
// digest of their bits. With "change" ("grow", "vanish", "cut", "replace"), that happens to the
// file of that name when half of the signal has been pulled.
nlohmann::json AnswerFilterRequest(const nlohmann::json& request);

}  // namespace hardening

#pragma once

#include <cmath>
#include <limits>

namespace support {

// Doubles that conversions and clamps may stumble over. Inputs that the fuzz targets keep name them
// by their place: new ones go to the end.
inline constexpr double OddNumbers[] = {0.5,
                                        -0.5,
                                        2048.0,
                                        2049.0,
                                        8192.0,
                                        2147483647.0,
                                        2147483648.0,
                                        -2147483648.0,
                                        -2147483649.0,
                                        9007199254740992.0,
                                        1e300,
                                        -1e300,
                                        std::numeric_limits<double>::denorm_min(),
                                        HUGE_VAL,
                                        -HUGE_VAL,
                                        2.9,
                                        -2.9,
                                        -0.0,
                                        0.0,
                                        1.0,
                                        -1.0,
                                        std::numeric_limits<double>::quiet_NaN()};

}  // namespace support

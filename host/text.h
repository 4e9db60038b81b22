#ifndef WAVEFILTERS_HOST_TEXT_H
#define WAVEFILTERS_HOST_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wavechain {

/// The number that the whole text is, in C notation whatever the locale; nothing for any
/// other text, for not-a-number and for values beyond double.
std::optional<double> ParseNumber(std::string_view text);

/// The shortest text that reads back as the same number.
std::string NumberText(double value);

/// The candidate that differs least from the word, upper and lower case taken as equal;
/// empty where none is close enough to be meant.
std::string Nearest(std::string_view word, const std::vector<std::string_view>& candidates);

/// "; did you mean X?" where there is a nearest candidate, otherwise "; there are A, B, C".
std::string Suggestion(std::string_view word, const std::vector<std::string_view>& candidates);

/// The words with ", " between them.
std::string Joined(const std::vector<std::string_view>& words);

/// "1 sample", "2 samples".
std::string Counted(long long count, std::string_view noun);

}  // namespace wavechain

#endif

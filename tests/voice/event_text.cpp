#include "voice/event_text.h"

#include <algorithm>
#include <cstring>

namespace voice {
namespace {

int Among(int first, int last, std::mt19937& random) {
  return std::uniform_int_distribution<int>(first, last)(random);
}

double Between(double first, double last, std::mt19937& random) {
  return std::uniform_real_distribution<double>(first, last)(random);
}

bool OnceIn(int times, std::mt19937& random) { return Among(1, times, random) == 1; }

// A distance to the next event, in samples.
double Step(std::mt19937& random) {
  switch (Among(0, 11, random)) {
    case 0:
      return 0.0;
    case 1:
      return -Between(0.0, 600.0, random);
    case 2:
      return Between(0.0, 4.0, random);
    case 3:
      return Between(1000.0, 5000.0, random);
    default:
      return Between(20.0, 700.0, random);
  }
}

double OddTime(std::mt19937& random) {
  const double times[] = {1e300, -1e300, 3e9, -3e9, -0.5, -100.0, 0.0};
  return times[Among(0, 6, random)];
}

int Order(std::mt19937& random) {
  switch (Among(0, 7, random)) {
    case 0:
      return 0;
    case 1:
      return Among(250, 260, random);
    case 2:
      return Among(31, 249, random);
    default:
      return Among(1, 30, random);
  }
}

std::string Ratios(int order, std::mt19937& random) {
  if (OnceIn(40, random)) return " 5000 1";  // no finite coefficients
  const double spread = order > 40 ? 0.3 : Between(0.1, 3.0, random);
  std::string text;
  for (int i = 0; i < order; ++i) {
    text += " " + support::Text(
                      static_cast<double>(static_cast<float>(Between(-spread, spread, random))));
  }
  return text;
}

std::string Numbers(const support::Kind& kind, double interval_ms, int order,
                    std::mt19937& random) {
  std::string text = " " + support::Text(Between(-2.0, 2.0, random));
  if (std::strcmp(kind.entry, "PulseSynI") == 0) return text;
  if (std::strcmp(kind.entry, "GlotSynI") == 0) {
    text += " " + support::Text(Between(0.0, 0.5, random) / interval_ms);
    text += " " + support::Text(Between(-0.0005, 0.05, random) / interval_ms);
  }
  return text + Ratios(order, random);
}

// Takes a line's tail away, or puts something there that is no number.
std::string Damaged(const std::string& line, std::mt19937& random) {
  const auto place = static_cast<std::size_t>(Among(0, static_cast<int>(line.size()), random));
  const char* const odd[] = {"", " x", " ,", "e", " 1e400", "\v\f ", " nan", ".", " +", " 0x1F"};
  return line.substr(0, place) + odd[Among(0, 9, random)] +
         (OnceIn(2, random) ? line.substr(place) : std::string());
}

}  // namespace

std::string RandomEvents(const support::Kind& kind, double interval_ms, int length,
                         std::mt19937& random) {
  std::string text;
  double place = Between(-300.0, 900.0, random);
  const int most = Among(0, 40, random);
  const bool damage = OnceIn(2, random);
  const bool sameOrder = OnceIn(2, random);
  int order = Order(random);
  const char* const end = OnceIn(4, random) ? "\r\n" : "\n";
  for (int line = 0; line < most && place < length + 2000.0; ++line) {
    const double time_ms = OnceIn(25, random) ? OddTime(random) : place * interval_ms;
    if (!sameOrder || OnceIn(15, random)) order = Order(random);
    std::string event = support::Text(time_ms) + Numbers(kind, interval_ms, order, random);
    if (damage && OnceIn(12, random)) event = Damaged(event, random);
    text += event + (OnceIn(9, random) ? " \t" : "") + end;
    place += Step(random);
  }
  if (OnceIn(3, random) && !text.empty()) text.erase(text.find_last_not_of("\r\n") + 1);
  return text;
}

}  // namespace voice

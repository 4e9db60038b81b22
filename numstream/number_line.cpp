#include "numstream/number_line.h"

#include <charconv>
#include <cstdint>
#include <locale>

namespace wavefilters {
namespace {

// The classic locale's white space, without asking it.
constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

const char* SkipDigits(const char* p, const char* end) {
  while (p != end && IsDigit(*p)) {
    ++p;
  }
  return p;
}

// The token at `p`, which is not the end, when it has the form [+-] digits [. digits] [e [+-]
// digits] with a digit on at least one side of the point, and white space or the end of the text
// behind it.
struct PlainToken {
  const char* end = nullptr;  // null for any other form
  bool whole = false;         // digits alone

  PlainToken(const char* p, const char* limit) {
    if (*p == '+' || *p == '-') {
      ++p;
    }
    const char* digits = p;
    p = SkipDigits(p, limit);
    auto count = p - digits;
    whole = true;
    if (p != limit && *p == '.') {
      whole = false;
      const char* fraction = ++p;
      p = SkipDigits(p, limit);
      count += p - fraction;
    }
    if (count == 0) {
      return;
    }
    if (p != limit && (*p == 'e' || *p == 'E')) {
      whole = false;
      ++p;
      if (p != limit && (*p == '+' || *p == '-')) {
        ++p;
      }
      const char* exponent = p;
      p = SkipDigits(p, limit);
      if (p == exponent) {
        return;
      }
    }
    if (p == limit || IsSpace(*p)) {
      end = p;
    }
  }
};

// Up to 18 digits fit 64 bits; from there to T is one rounding, as the stream's is.
constexpr int MostWholeDigits = 18;

template <class T>
T FromDigits(const char* p, const char* end) {
  std::int64_t digits = 0;
  for (; p != end; ++p) {
    digits = 10 * digits + (*p - '0');
  }
  return static_cast<T>(digits);
}

template <class T>
bool Convert(const char* p, PlainToken token, T& value) {
  const bool negative = *p == '-';
  if (negative || *p == '+') {
    ++p;
  }
  T magnitude{};
  if (token.whole && token.end - p <= MostWholeDigits) {
    magnitude = FromDigits<T>(p, token.end);
  } else if (std::from_chars(p, token.end, magnitude).ec != std::errc{}) {
    return false;  // beyond the type's range: the stream knows what becomes of it
  }
  value = negative ? -magnitude : magnitude;
  return true;
}

}  // namespace

NumberLine::NumberLine() { stream.imbue(std::locale::classic()); }

void NumberLine::Take(std::string& line) {
  text.swap(line);
  at = 0;
  failed = false;
}

template <class T>
bool NumberLine::Read(T& value) {
  if (failed) {
    return false;
  }
  const char* p = text.data() + at;
  const char* end = text.data() + text.size();
  while (p != end && IsSpace(*p)) {
    ++p;
  }
  if (p == end) {
    failed = true;
    return false;
  }
  const PlainToken token(p, end);
  if (token.end != nullptr && Convert(p, token, value)) {
    at = static_cast<std::size_t>(token.end - text.data());
    return true;
  }
  at = static_cast<std::size_t>(p - text.data());
  return ReadByStream(value);
}

template <class T>
bool NumberLine::ReadByStream(T& value) {
  stream.exceptions(std::ios::goodbit);
  stream.clear();
  // From the token on only: a line of many odd tokens must not be copied whole for each.
  std::size_t length = 1;
  while (at + length < text.size() && !IsSpace(text[at + length])) {
    ++length;
  }
  stream.str(text.substr(at, length));
  // What is thrown inside the extraction, a failed allocation, passes on.
  stream.exceptions(std::ios::badbit);
  stream >> value;
  failed = stream.fail();
  if (!failed) {
    at += stream.eof() ? length : static_cast<std::size_t>(stream.tellg());
  }
  return !failed;
}

template bool NumberLine::Read(float& value);
template bool NumberLine::Read(double& value);

}  // namespace wavefilters

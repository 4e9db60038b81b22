#include "host/picture_comment.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "host/failure.h"
#include "host/regular_file.h"

namespace wavechain {
namespace {

constexpr std::string_view PngMagic = "\x89PNG\r\n\x1a\n";
constexpr std::string_view TextChunk = "tEXt";
constexpr std::string_view Keyword{"Comment\0", 8};
constexpr std::size_t NumberBytes = 4;  // of a chunk's length, and of its checksum
constexpr std::size_t ChunkHead = 2 * NumberBytes;
constexpr std::size_t HeaderEnd = PngMagic.size() + ChunkHead + 13 + NumberBytes;

constexpr std::string_view PdfMagic = "%PDF";
constexpr std::array<std::string_view, 2> SvgMagics = {"<?xml", "<svg"};
constexpr std::string_view MetadataStart = "<metadata>";
constexpr std::string_view MetadataEnd = "</metadata>";
constexpr std::array<std::pair<char, std::string_view>, 3> Entities = {
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}}};

// On a line of its own; no other text of a picture holds a line end.
constexpr std::string_view SubjectStart = "\n   /Subject ";
// Of a text with parentheses or backslashes: UTF-16 in hexadecimal digits, four a letter.
constexpr std::string_view HexStart = "<FEFF";
constexpr std::size_t HexDigits = 4;

// Where a comment is looked for: at the start of a PNG or SVG, at the end of a PDF.
constexpr std::int64_t SearchedBytes = 1 << 22;

std::string BigEndian(std::uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>((number >> static_cast<unsigned>(shift)) & 0xffU);
  }
  return bytes;
}

std::size_t Number(std::string_view bytes) {
  std::size_t number = 0;
  for (const char byte : bytes.substr(0, NumberBytes)) {
    number = (number << 8U) | static_cast<unsigned char>(byte);
  }
  return number;
}

std::string FromPng(std::string_view png) {
  std::size_t at = PngMagic.size();
  while (at + ChunkHead <= png.size()) {
    const std::size_t length = Number(png.substr(at));
    const std::string_view type = png.substr(at + NumberBytes, NumberBytes);
    if (length > png.size() - at - ChunkHead) {
      break;
    }
    const std::string_view content = png.substr(at + ChunkHead, length);
    if (type == TextChunk && content.starts_with(Keyword)) {
      return std::string(content.substr(Keyword.size()));
    }
    at += ChunkHead + length + NumberBytes;
  }
  return "";
}

std::string FromSvg(std::string_view svg) {
  const std::size_t start = svg.find(MetadataStart);
  const std::size_t end = svg.find(MetadataEnd, start);
  if (start == std::string_view::npos || end == std::string_view::npos) {
    return "";
  }
  std::string_view rest = svg.substr(0, end).substr(start + MetadataStart.size());
  std::string text;
  while (!rest.empty()) {
    char letter = rest.front();
    std::size_t taken = 1;
    for (const auto& [meant, entity] : Entities) {
      if (rest.starts_with(entity)) {
        letter = meant;
        taken = entity.size();
      }
    }
    text += letter;
    rest.remove_prefix(taken);
  }
  return text;
}

std::string FromPdf(std::string_view pdf) {
  const std::size_t start = pdf.rfind(SubjectStart);
  if (start == std::string_view::npos) {
    return "";
  }
  const std::string_view subject = pdf.substr(start + SubjectStart.size());
  const std::string_view line = subject.substr(0, subject.find('\n'));
  if (line.starts_with('(') && line.ends_with(')')) {
    return std::string(line.substr(1, line.size() - 2));
  }
  if (!line.starts_with(HexStart) || !line.ends_with('>')) {
    return "";
  }
  std::string text;
  for (std::size_t at = HexStart.size(); at + HexDigits < line.size(); at += HexDigits) {
    unsigned letter = 0;
    std::from_chars(line.data() + at, line.data() + at + HexDigits, letter, 16);
    text += static_cast<char>(letter & 0x7fU);
  }
  return text;
}

}  // namespace

std::string WithPngComment(const std::string& png, std::string_view comment) {
  const std::string chunk = std::string(TextChunk) + std::string(Keyword) + std::string(comment);
  const auto length = static_cast<std::uint32_t>(chunk.size() - TextChunk.size());
  const auto checksum = static_cast<std::uint32_t>(::crc32_z(
      ::crc32_z(0, nullptr, 0), reinterpret_cast<const Bytef*>(chunk.data()), chunk.size()));
  std::string with = png;
  return with.insert(HeaderEnd, BigEndian(length) + chunk + BigEndian(checksum));
}

std::string WithSvgComment(const std::string& svg, std::string_view comment) {
  std::string element(MetadataStart);
  for (const char letter : comment) {
    std::string_view written(&letter, 1);
    for (const auto& [meant, entity] : Entities) {
      written = letter == meant ? entity : written;
    }
    element += written;
  }
  element += std::string(MetadataEnd) + "\n";
  constexpr std::string_view TagEnd = ">\n";
  const std::size_t tag = svg.find("<svg ");
  const std::size_t end = tag == std::string::npos ? tag : svg.find(TagEnd, tag);
  if (end == std::string::npos) {
    Fail(ExitStatus::Output,
         "the picture cannot tell how it was made: cairo wrote an SVG of another kind; add "
         "--no-record");
  }
  std::string with = svg;
  return with.insert(end + TagEnd.size(), element);
}

std::string PictureComment(int descriptor) {
  const std::string start = ReadPart(descriptor, 0, PngMagic.size());
  const auto begins = [&start](std::string_view magic) { return start.starts_with(magic); };
  if (begins(PngMagic)) {
    return FromPng(ReadPart(descriptor, 0, SearchedBytes));
  }
  if (std::ranges::any_of(SvgMagics, begins)) {
    return FromSvg(ReadPart(descriptor, 0, SearchedBytes));
  }
  if (begins(PdfMagic)) {
    const std::int64_t size = ::lseek(descriptor, 0, SEEK_END);
    return FromPdf(
        ReadPart(descriptor, std::max<std::int64_t>(size - SearchedBytes, 0), SearchedBytes));
  }
  return "";
}

}  // namespace wavechain

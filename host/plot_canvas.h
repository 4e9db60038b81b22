#ifndef WAVEFILTERS_HOST_PLOT_CANVAS_H
#define WAVEFILTERS_HOST_PLOT_CANVAS_H

#include <cairo.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/plot_layout.h"

namespace wavechain {

/// The formats that pictures are written in.
enum class PictureFormat { Png, Svg, Pdf };

/// The format of that name ("png") or, without one, of the path's extension. Fails (usage)
/// where there is no such format.
PictureFormat ChoosePictureFormat(const std::string& path, const std::optional<std::string>& name);
/// "PNG".
std::string_view NameOf(PictureFormat format);
/// "png", as ChoosePictureFormat takes it.
std::string_view WordFor(PictureFormat format);

enum class Anchor { Start, Middle, End };

struct Style {
  Colour colour = InkColour;
  double width = 1.0;
  bool dashed = false;
};

/// What a picture is drawn on: lines, areas and words at places in its own units, x to the
/// right, y down. The same calls give the same bytes. Everything goes to memory.
class Canvas {
 public:
  Canvas(PictureFormat pictureFormat, const PictureSize& size, const std::string& title);

  void Line(const Point& from, const Point& to, const Style& style);
  void Polyline(const std::vector<Point>& points, const Style& style);
  void Fill(const Box& box, Colour colour);
  void Frame(const Box& box, Colour colour);
  /// Stretches the raster over the box, each cell a rectangle of one colour.
  void Image(const Box& box, const Raster& raster);
  /// Text whose baseline is at `at`.
  void Text(const Point& at, std::string_view text, Anchor anchor, bool bold = false);
  /// Text read upwards, its middle at `at`.
  void TextUpwards(const Point& at, std::string_view text);
  /// Nothing is drawn outside the box until Unclip.
  void Clip(const Box& box);
  void Unclip();

  /// Completes the picture, with a comment inside unless it is empty, and hands its bytes over.
  /// Fails (output) where drawing failed.
  std::string Finish(const std::string& comment);

  /// How far the text goes, in any picture.
  static double TextWidth(std::string_view text, bool bold = false);

 private:
  struct Release {
    void operator()(cairo_t* held) const { ::cairo_destroy(held); }
    void operator()(cairo_surface_t* held) const { ::cairo_surface_destroy(held); }
  };

  void Use(const Style& style);

  PictureFormat format;
  // Surfaces write into it when they are finished.
  std::unique_ptr<std::string> bytes = std::make_unique<std::string>();
  std::unique_ptr<cairo_surface_t, Release> surface;
  std::unique_ptr<cairo_t, Release> context;
};

/// While it lives canvases may be made; at its end what drawing keeps for the next picture (fonts
/// and their patterns) is given back. It outlives every canvas.
class Drawing {
 public:
  Drawing() = default;
  ~Drawing() { End(); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;

  /// Ends it now. Where memory has run out without a word, the libraries may crash over it here,
  /// so it belongs before the picture gets its name.
  void End();

 private:
  bool ended = false;
};

}  // namespace wavechain

#endif

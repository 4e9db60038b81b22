#include "host/plot_canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>
#include <utility>

#include "host/failure.h"
#include "host/out_of_memory.h"
#include "host/picture_comment.h"
#include "host/plot_label.h"

namespace wavechain {
namespace {

constexpr double FontSize = 12.0;

constexpr std::array<std::string_view, 3> FormatNames = {"png", "svg", "pdf"};

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned length) {
  try {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

cairo_surface_t* MakeSurface(PictureFormat format, const PictureSize& size,
                             const std::string& title, std::string* bytes) {
  if (format == PictureFormat::Png) {
    return ::cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height);
  }
  if (format == PictureFormat::Svg) {
    cairo_surface_t* svg =
        ::cairo_svg_surface_create_for_stream(Append, bytes, size.width, size.height);
    ::cairo_svg_surface_set_document_unit(svg, CAIRO_SVG_UNIT_PX);
    return svg;
  }
  cairo_surface_t* pdf =
      ::cairo_pdf_surface_create_for_stream(Append, bytes, size.width, size.height);
  ::cairo_pdf_surface_set_metadata(pdf, CAIRO_PDF_METADATA_CREATE_DATE, "2000-01-01T00:00:00Z");
  ::cairo_pdf_surface_set_metadata(pdf, CAIRO_PDF_METADATA_TITLE, title.c_str());
  return pdf;
}

// Two runs give the same bytes: a PDF does not tell when it was made. Cairo always writes a date;
// blanks in its place leave everything else where it was.
void BlankDate(std::string& pdf) {
  constexpr std::string_view Date = "/CreationDate (20000101000000Z)";
  const std::size_t at = pdf.rfind(Date);
  if (at != std::string::npos) {
    pdf.replace(at, Date.size(), Date.size(), ' ');
  }
}

// Cairo ends all drawing at a byte that is no UTF-8; a line end has no shape.
std::string Shown(std::string_view text) { return OneLine(ValidUtf8(text)); }

constinit bool fontsAreLoaded = false;
constinit bool hasFailed = false;

// Where memory runs out as fontconfig loads its configuration by itself, it tries again for ever.
void LoadFonts() {
  if (fontsAreLoaded) {
    return;
  }
  FcConfig* const fonts = ::FcInitLoadConfigAndFonts();
  if (fonts == nullptr) {
    throw std::bad_alloc();
  }
  fontsAreLoaded = ::FcConfigSetCurrent(fonts) != FcFalse;
  ::FcConfigDestroy(fonts);  // it is held as the current one
  if (!fontsAreLoaded) {
    throw std::bad_alloc();
  }
}

// The same letters whatever the desktop's settings: they shape the pixels.
void UseFont(cairo_t* context, bool bold) {
  LoadFonts();
  ::cairo_select_font_face(context, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
  ::cairo_set_font_size(context, FontSize);
  cairo_font_options_t* options = ::cairo_font_options_create();
  ::cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  ::cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  ::cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  ::cairo_set_font_options(context, options);
  ::cairo_font_options_destroy(options);
}

// Cairo notes a failure and draws no more.
void RequireDrawn(cairo_status_t status) {
  // Of all that libpng can fail for, there is nothing but want of memory here.
  const cairo_status_t why = status == CAIRO_STATUS_PNG_ERROR ? CAIRO_STATUS_NO_MEMORY : status;
  if (why != CAIRO_STATUS_SUCCESS) {
    hasFailed = true;
    Fail(ExitStatus::Output, "the picture cannot be drawn: {}", ::cairo_status_to_string(why));
  }
}

double Advance(cairo_t* context, const std::string& text) {
  cairo_text_extents_t extents = {};
  ::cairo_text_extents(context, text.c_str(), &extents);
  RequireDrawn(::cairo_status(context));
  return extents.x_advance;
}

void SetColour(cairo_t* context, Colour colour) {
  const auto part = [colour](int shift) { return ((colour >> shift) & 0xffU) / 255.0; };
  ::cairo_set_source_rgb(context, part(16), part(8), part(0));
}

}  // namespace

void Drawing::End() {
  // What was lost on the way, for want of memory, they would abort over.
  if (std::exchange(ended, true) || hasFailed || MemoryHasFailed()) {
    return;
  }
  // In this order: cairo holds fonts of fontconfig's.
  ::cairo_debug_reset_static_data();
  ::FcFini();
  fontsAreLoaded = false;
}

PictureFormat ChoosePictureFormat(const std::string& path, const std::optional<std::string>& name) {
  const std::size_t dot = path.find_last_of("./");
  const bool hasExtension = dot != std::string::npos && path[dot] == '.';
  std::string wanted = name.value_or(hasExtension ? path.substr(dot + 1) : "");
  std::ranges::transform(wanted, wanted.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  for (std::size_t i = 0; i < FormatNames.size(); ++i) {
    if (wanted == FormatNames[i]) {
      return static_cast<PictureFormat>(i);
    }
  }
  if (name) {
    Fail(ExitStatus::Usage, "--format {}: pictures are written as png, svg or pdf", *name);
  }
  Fail(ExitStatus::Usage,
       "{}: pictures are written as .png, .svg or .pdf; name it so, or choose by --format", path);
}

std::string_view NameOf(PictureFormat format) {
  constexpr std::array<std::string_view, 3> Names = {"PNG", "SVG", "PDF"};
  return Names[static_cast<std::size_t>(format)];
}

std::string_view WordFor(PictureFormat format) {
  return FormatNames[static_cast<std::size_t>(format)];
}

Canvas::Canvas(PictureFormat pictureFormat, const PictureSize& size, const std::string& title)
    : format(pictureFormat),
      surface(MakeSurface(pictureFormat, size, Shown(title), bytes.get())),
      context(::cairo_create(surface.get())) {
  Fill({0, 0, size.width, size.height}, PaperColour);
}

void Canvas::Use(const Style& style) {
  SetColour(context.get(), style.colour);
  ::cairo_set_line_width(context.get(), style.width);
  // A piece of a single point becomes a dot.
  ::cairo_set_line_cap(context.get(), style.dashed ? CAIRO_LINE_CAP_BUTT : CAIRO_LINE_CAP_ROUND);
  ::cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_ROUND);
  const double dashes[] = {6.0, 4.0};
  ::cairo_set_dash(context.get(), dashes, style.dashed ? 2 : 0, 0.0);
}

void Canvas::Line(const Point& from, const Point& to, const Style& style) {
  Use(style);
  ::cairo_set_line_cap(context.get(), CAIRO_LINE_CAP_BUTT);
  ::cairo_move_to(context.get(), from.x, from.y);
  ::cairo_line_to(context.get(), to.x, to.y);
  ::cairo_stroke(context.get());
}

void Canvas::Polyline(const std::vector<Point>& points, const Style& style) {
  if (points.empty()) {
    return;
  }
  Use(style);
  ::cairo_move_to(context.get(), points.front().x, points.front().y);
  for (const Point& point : points) {
    ::cairo_line_to(context.get(), point.x, point.y);
  }
  ::cairo_stroke(context.get());
}

void Canvas::Fill(const Box& box, Colour colour) {
  SetColour(context.get(), colour);
  ::cairo_rectangle(context.get(), box.x, box.y, box.width, box.height);
  ::cairo_fill(context.get());
}

void Canvas::Frame(const Box& box, Colour colour) {
  Use({.colour = colour});
  ::cairo_set_line_join(context.get(), CAIRO_LINE_JOIN_MITER);
  // Around the box: what is in it stays whole.
  ::cairo_rectangle(context.get(), box.x - 0.5, box.y - 0.5, box.width + 1.0, box.height + 1.0);
  ::cairo_stroke(context.get());
}

void Canvas::Image(const Box& box, const Raster& raster) {
  const std::unique_ptr<cairo_surface_t, Release> image(
      ::cairo_image_surface_create(CAIRO_FORMAT_RGB24, raster.columns, raster.rows));
  RequireDrawn(::cairo_surface_status(image.get()));
  unsigned char* const data = ::cairo_image_surface_get_data(image.get());
  if (data == nullptr) {
    return;
  }
  const int stride = ::cairo_image_surface_get_stride(image.get());
  const auto columns = static_cast<std::size_t>(raster.columns);
  for (int row = 0; row < raster.rows; ++row) {
    std::memcpy(data + static_cast<std::ptrdiff_t>(row) * stride,
                raster.cells.data() + static_cast<std::size_t>(row) * columns,
                columns * sizeof(Colour));
  }
  ::cairo_surface_mark_dirty(image.get());
  ::cairo_save(context.get());
  ::cairo_translate(context.get(), box.x, box.y);
  ::cairo_scale(context.get(), static_cast<double>(box.width) / raster.columns,
                static_cast<double>(box.height) / raster.rows);
  ::cairo_set_source_surface(context.get(), image.get(), 0.0, 0.0);
  ::cairo_pattern_set_filter(::cairo_get_source(context.get()), CAIRO_FILTER_NEAREST);
  ::cairo_rectangle(context.get(), 0.0, 0.0, raster.columns, raster.rows);
  ::cairo_fill(context.get());
  ::cairo_restore(context.get());
}

void Canvas::Text(const Point& at, std::string_view text, Anchor anchor, bool bold) {
  const std::string shown = Shown(text);
  UseFont(context.get(), bold);
  SetColour(context.get(), InkColour);
  const double width = Advance(context.get(), shown);
  const double shift = anchor == Anchor::Start ? 0.0 : anchor == Anchor::Middle ? 0.5 : 1.0;
  ::cairo_move_to(context.get(), at.x - shift * width, at.y);
  ::cairo_show_text(context.get(), shown.c_str());
}

void Canvas::TextUpwards(const Point& at, std::string_view text) {
  ::cairo_save(context.get());
  ::cairo_translate(context.get(), at.x, at.y);
  ::cairo_rotate(context.get(), -0.5 * std::numbers::pi);
  Text({0.0, 0.0}, text, Anchor::Middle);
  ::cairo_restore(context.get());
}

void Canvas::Clip(const Box& box) {
  ::cairo_save(context.get());
  ::cairo_rectangle(context.get(), box.x, box.y, box.width, box.height);
  ::cairo_clip(context.get());
}

void Canvas::Unclip() { ::cairo_restore(context.get()); }

std::string Canvas::Finish(const std::string& comment) {
  if (format == PictureFormat::Pdf && !comment.empty()) {
    ::cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_SUBJECT, comment.c_str());
  }
  cairo_status_t status = ::cairo_status(context.get());
  if (status == CAIRO_STATUS_SUCCESS && format == PictureFormat::Png) {
    status = ::cairo_surface_write_to_png_stream(surface.get(), Append, bytes.get());
  }
  ::cairo_surface_finish(surface.get());
  if (status == CAIRO_STATUS_SUCCESS) {
    status = ::cairo_surface_status(surface.get());
  }
  RequireDrawn(status);
  if (format == PictureFormat::Pdf) {
    BlankDate(*bytes);
  } else if (!comment.empty()) {
    *bytes = format == PictureFormat::Png ? WithPngComment(*bytes, comment)
                                          : WithSvgComment(*bytes, comment);
  }
  return std::move(*bytes);
}

double Canvas::TextWidth(std::string_view text, bool bold) {
  const std::unique_ptr<cairo_surface_t, Release> scratch(
      ::cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1));
  const std::unique_ptr<cairo_t, Release> measure(::cairo_create(scratch.get()));
  UseFont(measure.get(), bold);
  return Advance(measure.get(), Shown(text));
}

}  // namespace wavechain

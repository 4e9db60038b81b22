#include "host/plot_picture.h"

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/output_file.h"
#include "host/plot_drawing.h"
#include "host/run_steps.h"

namespace wavechain {
namespace {

std::string Drawn(PictureFormat format, const std::string& title, const std::vector<Panel>& panels,
                  const Layout& layout, const std::string& comment) {
  Canvas canvas(format, layout.size, title);
  Draw(canvas, panels, layout);
  return canvas.Finish(comment);
}

}  // namespace

void WritePicture(Drawing& drawing, const PictureTarget& target, const std::string& title,
                  const std::vector<Panel>& panels, const Layout& layout,
                  const std::string& comment, Log& log) {
  const std::string bytes = Drawn(target.format, title, panels, layout, comment);
  drawing.End();
  const auto output = OpenOutput(target.path, target.replace);
  if (const int error = WriteAll(output->Descriptor(), bytes.data(), bytes.size())) {
    StopIfInterrupted();
    Fail(ExitStatus::Output, "{}: cannot be written: {}", output->Name(), SystemText(error));
  }
  output->Commit();
  Mention(log, [&] {
    return fmt::format("write  {}: {}, {} x {} {}", output->Name(), NameOf(target.format),
                       layout.size.width, layout.size.height,
                       target.format == PictureFormat::Pdf ? "points" : "pixels");
  });
}

}  // namespace wavechain

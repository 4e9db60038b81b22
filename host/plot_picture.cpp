#include "host/plot_picture.h"

#include "host/failure.h"
#include "host/interrupt.h"
#include "host/output_file.h"
#include "host/plot_drawing.h"
#include "host/run_steps.h"

namespace wavechain {

void WritePicture(const PictureTarget& target, const std::string& title,
                  const std::vector<Panel>& panels, const Layout& layout,
                  const std::string& comment, Log& log) {
  Canvas canvas(target.format, layout.size, title);
  Draw(canvas, panels, layout);
  const std::string bytes = canvas.Finish(comment);
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

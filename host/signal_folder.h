#ifndef WAVEFILTERS_HOST_SIGNAL_FOLDER_H
#define WAVEFILTERS_HOST_SIGNAL_FOLDER_H

#include <string>
#include <string_view>
#include <vector>

#include "host/unfinished.h"

namespace wavechain {

/// A folder of symbolic links under which filters find exactly the data files that they are
/// meant to read, wherever those lie. Filters make file names out of the signal's name, by
/// rules of their own and in 512 bytes at most; so a filter is told that its signal is called
/// SignalName(), short and without an odd character, and the links bear the names that it
/// will make of that. Folder and links are removed at the end.
class SignalFolder {
 public:
  /// Makes an empty folder. Fails (input) where none can be made.
  SignalFolder();
  ~SignalFolder();
  SignalFolder(const SignalFolder&) = delete;
  SignalFolder& operator=(const SignalFolder&) = delete;

  /// What the filter is told that its signal is called.
  std::string SignalName() const { return folder + "/s.wav"; }

  /// Gives `file` the name that is made by putting `extension` (".xyd") in the place of the
  /// signal's own one. Fails (input) where the link cannot be made.
  void LinkByExtension(std::string_view extension, const std::string& file);
  /// The same for a name that is put behind the whole signal's name ("pal.dat").
  void LinkBehindName(std::string_view behind, const std::string& file);
  /// Puts an empty file there instead.
  void EmptyBehindName(std::string_view behind);

 private:
  void Link(const std::string& link, const std::string& file);

  std::string folder;
  TemporaryPath abandoned{folder};
  std::vector<std::string> made;  // what lies in it
};

}  // namespace wavechain

#endif

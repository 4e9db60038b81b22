#pragma once

#include <functional>
#include <list>
#include <vector>

#include "support/descriptor_mock.h"

namespace support {

// A host's source of samples: IWaveSourceC and slot 7. It gives its samples in order and is over
// once all are gone, unless the script below says otherwise. All calls are noted, its descriptors'
// under "<name>.descriptor".
class SourceMock : public Mock {
 public:
  SourceMock(std::string objectName, CallLog& calls, std::vector<float> signal = {});

  // The object with one more reference, for Set_src_list, which takes it over.
  void* Give();

  int Remaining() const { return static_cast<int>(samples.size()) - position; }

  // The signal, and how many samples of it have been given away.
  std::vector<float> samples;
  int position = 0;

  // Every GetDescriptor gives a new object that says this...
  Description description;
  // ...or, where there is one, the same object again.
  DescriptorMock* shared = nullptr;

  // How many samples to deliver of `count` asked for; the mock stays within the request and what
  // remains. Without it: as many as possible.
  std::function<int(int count)> deliver;
  // What to say in `produced`, given the request and what was written. Without it: the truth.
  std::function<int(int count, int written)> claim;
  // Leaves `produced` as it was, as a careless host does that delivers nothing.
  bool silent = false;
  // What EndOfSrc answers. Without it: whether all samples are gone.
  std::function<bool()> end;
  // Runs before each operation, with its name as in "TransmitNow"; may throw.
  std::function<void(const std::string&)> before;
  // The result of TransmitNow, of which nobody takes note.
  int result = 77;

  // All descriptors given so far, the oldest first, as the filter left them.
  std::list<DescriptorMock> descriptors;

 private:
  void Enter(const std::string& operation, const std::string& arguments = "");
  void* NewDescriptor();
  int Transmit(float* buffer, int wanted, int* produced);

  SlotObject<SourceSlots, SourceMock> object;
};

// A delivery rule: each call brings at most the next of `sizes`, over and over.
std::function<int(int)> InBlocksOf(std::vector<int> sizes);

}  // namespace support

#include "batch/Frame.h"

namespace Korvex2::Tool {

const InputFile& Frame::Open(const InputShape& shape) {
  if (file == nullptr) {
    auto opened =
        place.isPart ? std::make_unique<InputFile>(place.path, place.begin, place.size, place.label)
                     : std::make_unique<InputFile>(place.path, MostBytes(place.path, shape));
    (void)opened->Read();
    file = std::move(opened);
  }
  return *file;
}

}  // namespace Korvex2::Tool

// The library that reads and writes files, by itself: no test here has anything of the tool.

#include "io/Containers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "io/Failure.h"
#include "support/TemporaryFolder.h"

namespace Korvex2::Io {
namespace {

class KindsOfFile : public TemporaryFolder {
 protected:
  static Image Picture(PixelFormat format) {
    Image image = NewImage(8, 6, *FindPixelFormat(format), NONE);
    for (std::size_t i = 0; i < image.GetDataSize(); ++i) {
      image.GetData()[i] = static_cast<unsigned char>(7 * i + i / 5);
    }
    return image;
  }

  static InputShape ShapeOf(const Image& image) {
    InputShape shape;
    shape.format = FindPixelFormat(image.GetPixelFormat());
    shape.width = image.GetCols();
    shape.height = image.GetRows();
    return shape;
  }

  // What there is to catch when the file is read.
  template <typename Caught>
  std::string MessageFor(const std::string& path, const InputShape& shape = {}) const {
    try {
      (void)ReadImage(path, shape);
    } catch (const Caught& failure) {
      return failure.what();
    }
    return "no failure";
  }
};

TEST_F(KindsOfFile, GiveBackWhatWasWritten) {
  for (const std::string name : {"a.png", "a.ppm", "a.pam", "a.tif", "a.npy", "a.raw"}) {
    const Image image = Picture(PIXEL_FORMAT_RGB8);
    WriteImage(image, Path(name));
    const Image read = ReadImage(Path(name), ShapeOf(image));
    ASSERT_EQ(read.GetDataSize(), image.GetDataSize()) << name;
    EXPECT_TRUE(std::equal(read.GetData(), read.GetData() + read.GetDataSize(), image.GetData()))
        << name;
  }
}

TEST_F(KindsOfFile, FailAsWhatTheLibraryThrows) {
  EXPECT_EQ(MessageFor<Failure>(Path("none.png")),
            "cannot read " + Path("none.png") + ": No such file or directory");
  EXPECT_EQ(MessageFor<Failure>(Write("text.png", "text")),
            Path("text.png") + " is not a PNG file");
  Write("frame.raw", std::string(48, 'x'));
  EXPECT_EQ(
      MessageFor<UsageFailure>(Path("frame.raw")),
      Path("frame.raw") + " has no header: say --from, --width and --height (it has 48 bytes)");
}

TEST_F(KindsOfFile, HoldOnlyWhatComesBackFromThem) {
  EXPECT_TRUE(Holds(ContainerOf("a.png"), PIXEL_FORMAT_RGB16));
  EXPECT_FALSE(Holds(ContainerOf("a.pgm"), PIXEL_FORMAT_RGB8));
  EXPECT_FALSE(Holds(ContainerOf("a.png"), PIXEL_FORMAT_422YUV8));
  EXPECT_TRUE(Holds(ContainerOf("a.raw"), PIXEL_FORMAT_422YUV8));
  EXPECT_THROW(WriteImage(Picture(PIXEL_FORMAT_RGB8), Path("a.pgm")), Failure);
  EXPECT_TRUE(Names().empty());
}

}  // namespace
}  // namespace Korvex2::Io

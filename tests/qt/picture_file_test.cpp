// Photos: read from files of the user's choice, written as bitmaps.
#include <gmock/gmock.h>

#include <QImage>

#include <fstream>

#include "qt/picture_file.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

constexpr int kWidth = 6;
constexpr int kHeight = 8;

class PictureFileTest : public testing::Test {
protected:
  std::string Write(const std::string& name, const std::string& bytes) {
    std::ofstream(folder_.Path() + name, std::ios::binary) << bytes;
    return folder_.Path() + name;
  }
  std::string Draw(const std::string& name, const char* format) {
    QImage picture(40, 20, QImage::Format_RGB32);
    picture.fill(QColor(200, 16, 24));
    EXPECT_TRUE(picture.save(QString::fromStdString(folder_.Path() + name), format));
    return folder_.Path() + name;
  }

  test::TemporaryFolder folder_;
  QtImageCodec codec_;
};

TEST_F(PictureFileTest, StretchesWhatItReadsAndReadsBackWhatItWrote) {
  // The name doesn't tell the format, the content does.
  for (const auto& [name, format] : {std::pair{"a.png", "PNG"}, {"b.gif", "JPG"}, {"c.bmp", "BMP"}}) {
    SCOPED_TRACE(name);
    const auto image = codec_.LoadStretched(Draw(name, format), kWidth, kHeight);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, kWidth);
    EXPECT_EQ(image->height, kHeight);
    EXPECT_NEAR(image->rgb[0], 200, 3);
    EXPECT_NEAR(image->rgb.back(), 24, 3);

    const std::string bitmap = folder_.Path() + "1.bmp";
    ASSERT_TRUE(codec_.SaveBitmap(*image, bitmap));
    EXPECT_EQ(codec_.LoadStretched(bitmap, kWidth, kHeight), image);
  }
}

TEST_F(PictureFileTest, ReadsAGifAndDrawsTransparentPartsOnWhite) {
  // One pixel: screen and table of two colours (red, black), image, its only code, end.
  const unsigned char gif[] = {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0x80, 0, 0, 0xFF, 0,    0,    0,  0,
                               0,   ',', 0,   0,   0,   0,   1, 0, 1, 0, 0,    2, 2, 0x44, 0x01, 0x00, ';'};
  const std::string path = Write("dot.gif", std::string(std::begin(gif), std::end(gif)));
  EXPECT_EQ(codec_.LoadStretched(path, 1, 1), (Image{1, 1, {255, 0, 0}}));
  QImage picture(4, 4, QImage::Format_ARGB32);
  picture.fill(Qt::transparent);
  const std::string clear = folder_.Path() + "clear.png";
  ASSERT_TRUE(picture.save(QString::fromStdString(clear)));
  EXPECT_EQ(codec_.LoadStretched(clear, 1, 1), (Image{1, 1, {255, 255, 255}}));
}

TEST_F(PictureFileTest, RefusesWhatIsNoPhoto) {
  const std::string whole = [&] {
    std::ifstream file(Draw("whole.png", "PNG"), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  EXPECT_FALSE(codec_.LoadStretched(Write("cut.png", whole.substr(0, 40)), kWidth, kHeight));
  EXPECT_FALSE(codec_.LoadStretched(Write("text.jpg", "no picture at all"), kWidth, kHeight));
  EXPECT_FALSE(codec_.LoadStretched(folder_.Path() + "nothing.bmp", kWidth, kHeight));
  EXPECT_FALSE(codec_.LoadStretched(folder_.Path(), kWidth, kHeight));
  // A head that promises 20,000 by 20,000 pixels of four bytes.
  std::string huge = "BM" + std::string(52, '\0');
  huge[10] = 54;
  huge[14] = 40;
  for (const std::size_t side : {18U, 22U}) {
    huge[side] = 0x20;
    huge[side + 1] = 0x4E;
  }
  huge[26] = 1;
  huge[28] = 32;
  EXPECT_FALSE(codec_.LoadStretched(Write("huge.bmp", huge), kWidth, kHeight));
  EXPECT_FALSE(codec_.SaveBitmap(Image{}, folder_.Path() + "empty.bmp"));
  EXPECT_FALSE(codec_.SaveBitmap(Image{1, 1, {1, 2, 3}}, folder_.Path() + "no/such/folder.bmp"));
}

} // namespace
} // namespace kelmio

// Links, pictures, the slider and the wave form.
#include <gmock/gmock.h>

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

#include "qt/binder.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::ElementsAre;

class DrawnControlsTest : public testing::Test {
protected:
  void Show() {
    EXPECT_THAT(Bind(window_, form_), testing::IsEmpty());
    form_.Visible = true;
    window_.resize(900, 700);
    Settle();
  }
  bool HasPicture() const { return !window_.photo->pixmap(Qt::ReturnByValue).isNull(); }
  void ShowPicture(const QString& path) {
    form_.picPhoto.Picture = path.toStdString();
    Settle();
  }
  QPoint Thumb() const { return {form_.sldPlace.ThumbLeft() + 8, window_.slider->height() / 2}; }

  TestForm form_;
  TestWindow window_;
  QTemporaryDir folder_;
};

TEST_F(DrawnControlsTest, ALabelIsALinkWhileItHasATextAndIsEnabled) {
  int clicks = 0;
  form_.lblLink.Click = [&] { ++clicks; };
  Show();
  EXPECT_FALSE(window_.link->IsLink()) << "an empty field";
  form_.lblLink.Caption = "<b>5551234</b>";
  Settle();
  EXPECT_EQ(window_.link->textFormat(), Qt::PlainText);
  QTest::mouseClick(window_.link, Qt::LeftButton, {}, QPoint(10, window_.link->height() / 2));
  QTest::keyClick(window_.link, Qt::Key_Return);
  EXPECT_EQ(clicks, 2);
  QTest::mouseClick(window_.link, Qt::RightButton, {}, QPoint(10, window_.link->height() / 2));
  form_.lblLink.Enabled = false;
  QTest::keyClick(window_.link, Qt::Key_Return); // not shown as disabled yet
  EXPECT_EQ(clicks, 2);
}

TEST_F(DrawnControlsTest, ASwatchShowsItsColorAndTellsAClickThatEndsOnIt) {
  int clicks = 0;
  form_.picPhoto.Click = [&] { ++clicks; };
  QPalette dark;
  dark.setColor(QPalette::Base, Qt::black);
  window_.setPalette(dark);
  window_.photo->setProperty("swatch", true);
  Show();
  EXPECT_EQ(window_.photo->palette().color(QPalette::Base), QColor(Qt::white));
  QTest::mousePress(window_.photo, Qt::LeftButton, {}, QPoint(5, 5));
  QTest::mouseRelease(window_.photo, Qt::LeftButton, {}, QPoint(-5, 5));
  EXPECT_EQ(clicks, 0);
  QTest::mouseClick(window_.photo, Qt::LeftButton, {}, QPoint(5, 5));
  EXPECT_EQ(clicks, 1);
}

TEST_F(DrawnControlsTest, APictureFollowsItsFileAndIsMadeSmallerWhileItIsRead) {
  Show();
  const QString path = folder_.filePath("1.bmp");
  QImage(3000, 1500, QImage::Format_RGB32).save(path);
  ShowPicture(path);
  EXPECT_EQ(window_.photo->pixmap(Qt::ReturnByValue).size(), QSize(1024, 512));
  QFile::remove(path);
  form_.picPhoto.Reload();
  Settle();
  EXPECT_FALSE(HasPicture());
}

TEST_F(DrawnControlsTest, WhatIsNoPictureShowsNothing) {
  Show();
  const QString broken = folder_.filePath("broken.bmp");
  QFile file(broken);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  // A header of the bitmap format that tells of 60000 by 60000 pixels.
  QByteArray header("BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x60\xEA\0\0\x60\xEA\0\0\x01\0\x18\0", 30);
  header.resize(54, '\0');
  file.write(header);
  file.close();
  const QString pipe = folder_.filePath("pipe.bmp");
  ASSERT_EQ(mkfifo(pipe.toLocal8Bit().constData(), 0600), 0);
  for (const QString& path : {broken, pipe, folder_.path(), folder_.filePath("none.bmp")}) {
    ShowPicture(path);
    EXPECT_FALSE(HasPicture()) << path.toStdString();
  }
}

TEST_F(DrawnControlsTest, TheSliderIsDraggedAndShowsItsValue) {
  std::vector<std::string> told;
  ucSlider& slider = form_.sldPlace;
  slider.Orientation = ucSlider::Orientations::Horizontal;
  slider.SetMax(1000);
  slider.ThumbGrabbed = [&](int shift) { told.push_back("grabbed " + std::to_string(shift)); };
  slider.ThumbReleased = [&](int) { told.emplace_back("released"); };
  slider.Click = [&] { told.emplace_back("click"); };
  Show();
  slider.SetValue(500);
  Settle();
  const QPoint start = Thumb();
  EXPECT_NEAR(start.x(), window_.slider->width() / 2, 1);

  QTest::mousePress(window_.slider, Qt::LeftButton, Qt::ShiftModifier, start);
  QTest::mouseMove(window_.slider, QPoint(window_.slider->width() + 50, start.y()));
  Settle();
  EXPECT_EQ(slider.Value(), 1000);
  const auto tips = window_.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
  const auto tip = std::find_if(tips.begin(), tips.end(), [](QLabel* label) { return label->text() == "1000"; });
  ASSERT_NE(tip, tips.end());
  EXPECT_TRUE((*tip)->isVisible());
  QTest::mouseRelease(window_.slider, Qt::LeftButton, {}, Thumb());
  Settle();
  EXPECT_THAT(told, ElementsAre("grabbed 1", "click", "released"));
  EXPECT_TRUE(window_.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly).isEmpty());
}

TEST_F(DrawnControlsTest, TheWaveFormMovesInFromTheRightAndIsEmptyWithoutARecording) {
  Show();
  const auto coloured = [this](bool right_half) {
    const QImage image = window_.wave->grab().toImage();
    const QRgb loud = window_.palette().color(QPalette::Highlight).rgb();
    int pixels = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width() / 2; ++x)
        pixels += image.pixel(right_half ? image.width() - 1 - x : x, y) == loud;
    return pixels;
  };
  form_.Wave.FormatA = 8000;
  Settle();
  EXPECT_EQ(coloured(true), 0);
  const std::vector<std::int16_t> samples(2000, 20000); // a quarter of a second
  form_.Wave.Draw(std::as_bytes(std::span(samples)));
  EXPECT_GT(coloured(true), 0);
  EXPECT_EQ(coloured(false), 0);
  form_.Wave.FormatA = 16000; // another recording
  Settle();
  EXPECT_EQ(coloured(true), 0);
  form_.Wave.Draw(std::as_bytes(std::span(samples)).first(1)); // half a sample
  EXPECT_EQ(coloured(true), 0);
}

} // namespace
} // namespace kelmio

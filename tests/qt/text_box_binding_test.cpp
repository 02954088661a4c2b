#include <gmock/gmock.h>

#include <QScrollBar>
#include <QTest>

#include "qt/binder.h"
#include "qt/text_offsets.h"
#include "test_form.h"

namespace kelmio {
namespace {

class TextBoxBindingTest : public testing::Test {
protected:
  TextBoxBindingTest() {
    Bind(window_, form_);
    form_.Visible = true;
    Settle();
  }

  void Log(const std::string& text) {
    TextBox& box = form_.txtPage;
    box.SelStart = box.Text.Get().size();
    box.SelLength = 0;
    box.ReplaceSelection(text);
  }

  TestForm form_;
  TestWindow window_;
};

TEST_F(TextBoxBindingTest, TypingReachesTheModelOnceAndComesBackChanged) {
  int changes = 0;
  form_.txtLine.Change = [&] {
    ++changes;
    if (form_.txtLine.Text.Get() == "ab")
      form_.txtLine.Text = "AB";
  };
  QTest::keyClicks(window_.line, "ab");
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(form_.txtLine.SelStart, 2U);
  Settle();
  EXPECT_EQ(window_.line->text(), "AB");
  EXPECT_EQ(changes, 2) << "the view's own refresh is no change by the user";
}

TEST_F(TextBoxBindingTest, SelectsByBytesOfTheStoredText) {
  form_.txtLine.Text = "M\xC3\xBCller";
  form_.txtLine.SelStart = 1;
  form_.txtLine.SelLength = 3;              // "ü" has two bytes
  form_.txtPage.Text = "M\xFCller\r\nzwei"; // Windows-1252
  form_.txtPage.SelStart = 8;
  form_.txtPage.SelLength = 4;
  Settle();
  EXPECT_EQ(window_.line->selectedText(), QString::fromUtf8("\xC3\xBCl"));
  EXPECT_EQ(window_.page->toPlainText(), QString::fromUtf8("M\xC3\xBCller\nzwei"));
  EXPECT_EQ(window_.page->textCursor().selectedText(), "zwei");

  window_.page->selectAll();
  EXPECT_EQ(form_.txtPage.SelStart, 0U);
  EXPECT_EQ(form_.txtPage.SelLength, form_.txtPage.Text.Get().size());
}

TEST_F(TextBoxBindingTest, AGrowingLogKeepsItsDocumentAndFollowsTheEndOnlyForWhoStandsThere) {
  for (int line = 0; line < 200; ++line)
    Log("a line of the log\r\n");
  Settle();
  QScrollBar* bar = window_.page->verticalScrollBar();
  ASSERT_GT(bar->maximum(), 0);
  EXPECT_EQ(bar->value(), bar->maximum());

  int resets = 0;
  QObject::connect(window_.page->document(), &QTextDocument::contentsChange, &window_,
                   [&](int, int removed, int) { resets += removed > 1; });
  bar->setValue(3);
  Log("the newest line\r\n");
  Settle();
  EXPECT_EQ(bar->value(), 3);
  EXPECT_EQ(resets, 0) << "only the new tail is handed on";
  EXPECT_TRUE(window_.page->toPlainText().endsWith("log\nthe newest line\n"));

  // Bytes that aren't UTF-8 change how the whole text is read.
  Log("\xFC");
  Settle();
  EXPECT_TRUE(window_.page->toPlainText().endsWith(QChar(0xFC)));
  form_.txtPage.Text = "";
  Settle();
  EXPECT_EQ(window_.page->toPlainText(), "");
}

TEST_F(TextBoxBindingTest, ALineEndThatComesInTwoPiecesIsOneBreak) {
  form_.txtPage.Text = "one\r";
  Settle();
  form_.txtPage.Text = "one\r\ntwo";
  Settle();
  EXPECT_EQ(window_.page->toPlainText(), "one\ntwo");
}

TEST(TextOffsetsTest, CountsCharactersOutsideTheBasicPlaneAndLineEnds) {
  const std::string text = "\xF0\x9F\x93\x9E\r\nx"; // a telephone receiver
  const TextForm page{true, true};
  EXPECT_EQ(ShownOffset(text, 4, page), 2U);
  EXPECT_EQ(ShownOffset(text, 6, page), 3U);
  EXPECT_EQ(ShownOffset(text, 99, page), 4U);
  EXPECT_EQ(StoredOffset(text, 3, page), 6U);
  EXPECT_EQ(StoredOffset(text, 99, page), 7U);
  EXPECT_EQ(ShownOffset(text, 6, {true, false}), 4U);
}

} // namespace
} // namespace kelmio

#include "contacts/contact_desk.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using test::WriteBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ContactEditor : public test::ContactDesk {};

TEST_F(ContactEditor, WritesANewContactUnderTheLowestFreeNumber) {
  WriteBytes(app.ContactsFile, "[1]\nName=a\n[4]\nName=d\n");
  app.NewContactName = " Jane ";
  app.NewContactPhone = "555-1234";
  Edit("", [&](frmContact& editor) {
    EXPECT_EQ(app.CurrentContactID, "2");
    EXPECT_EQ(editor.Page.txtHomePhone.Text.Get(), "555-1234");
    EXPECT_THAT(Sections(), ElementsAre("1", "4")) << "nothing is written before OK";
    editor.cmdCancel.Click();
  });
  EXPECT_THAT(Sections(), ElementsAre("1", "4"));
  Edit("", [&](frmContact& editor) {
    on_reload = [&] { // the list lets events run
      editor.EscapePressed();
      EXPECT_TRUE(editor.Visible && editor.Busy && editor.QueryUnload());
      EXPECT_FALSE(editor.cmdOK.Enabled || editor.cmdCancel.Enabled);
    };
    EXPECT_FALSE(editor.QueryUnload());
    editor.cmdOK.Click();
    EXPECT_FALSE(editor.Visible || editor.Busy);
  });
  EXPECT_THAT(Sections(), ElementsAre("1", "4", "2"));
  EXPECT_EQ(Value("2", "Name"), "Jane");
  EXPECT_EQ(Value("2", "Phone"), "555-1234");
  EXPECT_EQ(refreshes, 1);
}

TEST_F(ContactEditor, ANumberThatWasTakenMeanwhileIsLeftAlone) {
  images.pictures["/new.gif"] = 9;
  file_picker.choice = "/new.gif";
  Edit("", [&](frmContact& editor) {
    WriteBytes(app.ContactsFile, "[1]\nName=theirs\nPhone=1\n");
    editor.Page.cmdAddPhoto.Click();
    editor.Page.txtFullName.Text = "mine";
    editor.cmdOK.Click();
  });
  EXPECT_EQ(Value("1", "Name") + Value("1", "Phone"), "theirs1");
  EXPECT_EQ(Value("2", "Name"), "mine");
  EXPECT_EQ(app.CurrentContactID, "2");
  EXPECT_TRUE(images.saved.contains(app.PhotosFolder + "/2.bmp"));
  EXPECT_THAT(images.saved, SizeIs(1));
  // One who edits means the contact, whatever it is by then.
  Edit("1", [](frmContact& editor) {
    editor.Page.txtHomePhone.Text = "";
    editor.cmdOK.Click();
  });
  EXPECT_EQ(Value("1", "Phone"), "");
}

TEST_F(ContactEditor, TwoAtOnceEachWriteTheirOwn) {
  WriteBytes(app.ContactsFile, "[1]\nName=a\n[2]\nName=b\n");
  Edit("1", [&](frmContact& list_editor) {
    app.ContactOpenedExternally = true;
    Edit("2", [](frmContact& tray_editor) {
      tray_editor.Page.txtCity.Text = "B";
      tray_editor.cmdOK.Click();
    });
    EXPECT_EQ(refreshes, 0);
    list_editor.Page.txtCity.Text = "A";
    list_editor.cmdOK.Click();
  });
  EXPECT_EQ(refreshes, 1);
  EXPECT_EQ(Value("1", "City") + Value("2", "City"), "AB");
  EXPECT_EQ(Value("1", "Name") + Value("2", "Name"), "ab");
}

TEST_F(ContactEditor, ASectionOfAnyNameIsEditedUnderThatName) {
  for (const char* id : {"abc", "007", "1e1", "-3", "99999999999", "../x"}) {
    WriteBytes(app.ContactsFile, std::string("[7]\nName=seven\n[10]\nName=ten\n[") + id + "]\nName=mine\nPhone=1\n");
    WriteBytes(home.Path() + "x.bmp", "");
    images.pictures[app.PhotosFolder + "/../x.bmp"] = 1;
    Edit(id, [&](frmContact& editor) {
      EXPECT_EQ(editor.Page.txtFullName.Text.Get(), "mine") << id;
      EXPECT_EQ(editor.Page.picPhotoTag, PhotoTag::None);
      editor.Page.txtFullName.Text = "changed";
      editor.Page.cmdDeletePhoto.Click();
      editor.cmdOK.Click();
    });
    EXPECT_EQ(Value(id, "Name") + Value(id, "Phone"), "changed1") << id;
    EXPECT_EQ(Value("7", "Name") + Value("10", "Name"), "seventen");
    EXPECT_TRUE(fs::exists(home.Path() + "x.bmp"));
    EXPECT_THAT(Sections(), SizeIs(3));
  }
}

TEST_F(ContactEditor, WhatWasDoneLastToThePhotoCountsAtOk) {
  WriteBytes(app.ContactsFile, "[1]\nName=a\n");
  images.pictures["/new.jpg"] = 9;
  enum Step { Add, GiveUp, NoPicture, Delete };
  const struct {
    const char* name;
    bool stored;
    std::vector<Step> steps;
    bool saved, kept;
  } cases[] = {
      {"untouched", true, {}, false, true},
      {"given up", true, {GiveUp, NoPicture}, false, true},
      {"replaced", true, {Add, GiveUp}, true, true},
      {"deleted", true, {Delete, GiveUp}, false, false},
      {"added, deleted", true, {Add, Delete}, false, false},
      {"deleted, added", true, {Delete, Add}, true, true},
  };
  for (const auto& one : cases)
    for (const bool ok : {false, true}) {
      const std::string photo = app.PhotosFolder + "/1.bmp";
      fs::remove(photo);
      images.saved.clear();
      if (one.stored)
        MakePhoto("1");
      Edit("1", [&](frmContact& editor) {
        for (const Step step : one.steps) {
          file_picker.choice = step == Add ? "/new.jpg" : step == NoPicture ? "/text.txt" : "";
          (step == Delete ? editor.Page.cmdDeletePhoto : editor.Page.cmdAddPhoto).Click();
        }
        (ok ? editor.cmdOK : editor.cmdCancel).Click();
      });
      EXPECT_EQ(fs::exists(photo), ok ? one.kept : one.stored) << one.name;
      EXPECT_EQ(images.saved.contains(photo), ok && one.saved) << one.name;
    }
  EXPECT_THAT(troubles, IsEmpty());
}

TEST_F(ContactEditor, WhatCannotBeWrittenIsSaidAndTheWindowCloses) {
  fs::create_directory(app.ContactsFile);
  images.pictures["/new.jpg"] = 9;
  file_picker.choice = "/new.jpg";
  for (const char* id : {"", "../x"})
    Edit(id, [&](frmContact& editor) {
      editor.Page.cmdAddPhoto.Click();
      editor.Page.txtFullName.Text = "x";
      editor.cmdOK.Click();
      EXPECT_FALSE(editor.Visible);
    });
  EXPECT_THAT(troubles, SizeIs(3));
  EXPECT_THAT(images.saved, IsEmpty()) << "a photo of nobody would be the next contact's";
  EXPECT_THAT(boxes.shown, IsEmpty());
}

} // namespace
} // namespace kelmio

#include "core/app_state.h"

namespace kelmio {

void SetPaths(AppState& app, const std::string& app_path) {
  app.AppPath = app_path;
  app.MessagesFolder = app_path + "Messages";
  app.InboxName = "Inbox";
  app.InboxFolder = app_path + "Messages/Inbox";
  app.PhotosFolder = app_path + "Photos";
  app.ContactsFile = app_path + "Contacts.ini";
  app.CallLogFile = app_path + "CallLog.ini";
  app.SoundFolder = app_path + "Sound";
}

} // namespace kelmio

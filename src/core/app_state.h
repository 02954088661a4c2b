// What all windows share for the whole run.
#pragma once

#include <string>

namespace kelmio {

/// Set at start and read everywhere; it travels as a reference from `main.cpp`. User interface thread only.
struct AppState {
  std::string AppPath; // the program's folder with a closing separator
  std::string MessagesFolder;
  std::string InboxName;
  std::string InboxFolder;
  std::string PhotosFolder;
  std::string ContactsFile;
  std::string CallLogFile;
  std::string SoundFolder;
  int ScreenWidth = 0;  // of the work area, in twips
  int ScreenHeight = 0; // of the work area, in twips
  int ThemeStyle = 0;   // 0 to 3: which of the classic colour schemes the desktop has
  bool AppLoaded = false;
  bool StopPlaybackFlag = false; // ends every loop that waits for sound to finish
  std::string DialNumber;        // presets the dialer; never cleared

  // What the openers of the contact editor hand over to it.
  std::string CurrentContactID;         // the contact to edit; empty for a new one
  std::string NewContactName;           // presets a new contact
  std::string NewContactPhone;          // presets a new contact
  bool ContactOpenedExternally = false; // from elsewhere than the contact list, which then isn't refreshed
};

/// Fills in the paths that follow from `app_path`, which has its closing separator.
void SetPaths(AppState& app, const std::string& app_path);

} // namespace kelmio

// SPDX-License-Identifier: MIT
#include "tools/doctor_checks.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include <unistd.h>

#include "hotkey/hot_key_center.h"
#include "input/input_sources.h"
#include "platform/accessibility.h"
#include "platform/hot_key_service.h"
#include "platform/secure_input.h"
#include "platform/user_defaults.h"
#include "platform/workspace.h"
#include "support/log.h"
#include "support/settings.h"

namespace lexwend {
namespace {

using platform::Sentence;
using platform::SessionFacts;

constexpr std::size_t kShownOutcomes = 3;

Check good(std::string name, Sentence found) {
  return {std::move(name), CheckState::good, std::move(found), {}};
}

Check note(std::string name, Sentence found, Sentence advice = {}) {
  return {std::move(name), CheckState::note, std::move(found), std::move(advice)};
}

Check finding(std::string name, Sentence found, Sentence advice) {
  return {std::move(name), CheckState::finding, std::move(found), std::move(advice)};
}

/// Both languages with the same names around them.
Sentence with(const std::string& before, const Sentence& sentence, const std::string& after) {
  return {before + sentence.english + after, before + sentence.hebrew + after};
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

Check checkAgent(const SessionFacts& facts) {
  if (facts.agentProcess) {
    return good("agent", with("", {"Lexwend runs, process ", "Lexwend פועלת, תהליך "},
                              std::to_string(*facts.agentProcess)));
  }
  return finding("agent", {"Lexwend does not run", "Lexwend לא פועלת"},
                 {"start it from the applications menu, or by the command: lexwend",
                  "להפעיל אותה מתפריט היישומים, או בפקודה: lexwend"});
}

Check checkSession(const SessionFacts& facts) {
  const std::string desktop = facts.desktop.empty() ? "" : " (" + facts.desktop + ")";
  if (!facts.limit) {
    return good("session",
                with("", {"fixes work in a session of this type", "תיקונים עובדים בסביבה כזאת"}, desktop));
  }
  const Sentence otherSession{
      "at the login screen choose the session on X11 (Xorg)",
      "במסך הכניסה למחשב לבחור בסביבה שעובדת ב־X11 ‏(Xorg)"};
  return finding("session", with("", *facts.limit, desktop), facts.wayOut.value_or(otherSession));
}

Check checkDisplay(const SessionFacts& facts) {
  if (!facts.displayAnswers) {
    return finding("display",
                   facts.display.empty()
                       ? Sentence{"there is no display: DISPLAY is not set", "אין תצוגה: DISPLAY לא מוגדר"}
                       : with("", {"no display answers at ", "אין תצוגה שעונה בכתובת "}, facts.display),
                   {"run this in a terminal of the desktop", "להריץ את זה במסוף של שולחן העבודה"});
  }
  if (!facts.missingExtensions.empty()) {
    return finding(
        "display",
        with("", {"the display has no ", "לתצוגה חסרות ההרחבות "}, joined(facts.missingExtensions)),
        {"without these extensions no program may type for another; use another X server",
         "בלי ההרחבות האלה תוכנה לא יכולה להקליד בשביל תוכנה אחרת; להשתמש בשרת X אחר"});
  }
  return good("display", with(facts.display + ": ",
                              {"it has the extensions that a fix needs", "יש לה ההרחבות שתיקון צריך"}, ""));
}

Check checkBuses(const SessionFacts& facts) {
  if (!facts.sessionBus) {
    return note("accessibility",
                {"there is no session bus, so every fix goes through the clipboard",
                 "אין אפיק של הסביבה (session bus), ולכן כל תיקון עובר דרך לוח העריכה"},
                {"log in to a desktop, or start the session by dbus-run-session",
                 "להיכנס לשולחן עבודה, או להפעיל את הסביבה עם dbus-run-session"});
  }
  if (!facts.accessibilityBus) {
    return note("accessibility",
                {"the accessibility bus does not answer, so every fix goes through the clipboard",
                 "אפיק הנגישות לא עונה, ולכן כל תיקון עובר דרך לוח העריכה"},
                {"install at-spi2-core and log in again", "להתקין את at-spi2-core ולהיכנס למחשב מחדש"});
  }
  return good("accessibility", {"the accessibility bus answers", "אפיק הנגישות עונה"});
}

Check checkFocus(const CheckOptions& options) {
  const auto front = platform::workspace().frontmostApplication();
  const std::string name =
      front && front->bundleIdentifier ? " (" + *front->bundleIdentifier + ")" : std::string();
  if (platform::secureInput().isSecureEventInputEnabled()) {
    const Sentence found = with("",
                                {"the keyboard is in a password field or a terminal, where nothing is fixed",
                                 "המקלדת בשדה סיסמה או במסוף, ושם לא מתקנים"},
                                name);
    if (options.focusIsMeant) {
      return finding("focus", found,
                     {"copy the text into an editor and fix it there", "להעתיק את הטקסט לעורך ולתקן שם"});
    }
    return note("focus", found,
                {"for another window: lexwend-doctor --after 5, then click into that window",
                 "כדי לבדוק חלון אחר: lexwend-doctor --after 5, ואז ללחוץ בחלון ההוא"});
  }
  const auto system = platform::accessibility().createSystemWideElement();
  const auto focused =
      platform::accessibility().copyAttributeValue(system, platform::kFocusedUIElementAttribute);
  if (focused.error != 0) {
    return note("focus",
                with("",
                     {"the application in front does not tell of its field, so a fix goes through the "
                      "clipboard there",
                      "היישום שבחזית לא מספר על השדה שלו, ולכן התיקון בו עובר דרך לוח העריכה"},
                     name));
  }
  return good("focus", with("", {"the application in front answers", "היישום שבחזית עונה"}, name));
}

Check checkLayouts() {
  std::vector<std::string> names;
  for (const KeyboardLayout& layout : InputSources::enabledKeyboardLayouts()) names.push_back(layout.id);
  const auto english = InputSources::keyboardLayout("en");
  const auto hebrew = InputSources::keyboardLayout("he");
  if (!english || !hebrew) {
    const Sentence which = !english && !hebrew
                               ? Sentence{"neither an English nor a Hebrew", "לא אנגלית ולא עברית"}
                           : !english ? Sentence{"no English", "אין אנגלית"}
                                      : Sentence{"no Hebrew", "אין עברית"};
    return finding("layouts",
                   {which.english + " keyboard layout is enabled; enabled: " + joined(names),
                    "בין פריסות המקלדת המופעלות " + which.hebrew + "; מופעלות: " + joined(names)},
                   {"add the missing one in the keyboard settings: until then a fix cannot change the layout",
                    "להוסיף את החסרה בהגדרות המקלדת: עד אז תיקון לא יכול להחליף את שפת המקלדת"});
  }
  return good("layouts", with(joined(names),
                              {"; English: " + english->id + ", Hebrew: " + hebrew->id,
                               "; אנגלית: " + english->id + ", עברית: " + hebrew->id},
                              ""));
}

Check checkTable() {
  const KeyTables tables = InputSources::keyTables();
  if (LayoutMap::build(tables).builtFromSystem) {
    return good("table", {"the conversion goes by the enabled layouts", "ההמרה לפי הפריסות המופעלות"});
  }
  const bool isEnabled = InputSources::keyboardLayout("en") && InputSources::keyboardLayout("he");
  return note("table",
              isEnabled
                  ? Sentence{"the built-in table is used, because an enabled layout does not tell its keys",
                             "ההמרה לפי הטבלה המובנית, כי פריסה מופעלת לא מספרת מה המקשים שלה"}
                  : Sentence{"the built-in table is used, because a layout is missing",
                             "ההמרה לפי הטבלה המובנית, כי חסרה פריסה"});
}

/// A stored number that does not fit is fatal to the agent, and to whoever asks as it does.
bool hotKeyIsSound() {
  constexpr std::int64_t kMost = 0xffffffff;
  for (const auto key : {Settings::kHotKeyCodeKey, Settings::kHotKeyModifiersKey}) {
    const auto stored = Settings::d().objectForKey(key);
    const auto* whole = stored ? std::get_if<std::int64_t>(&*stored) : nullptr;
    if (whole != nullptr && (*whole < 0 || *whole > kMost)) return false;
  }
  return true;
}

Check checkHotKey(const SessionFacts& facts) {
  if (!hotKeyIsSound()) {
    return finding(
        "hotKey",
        with("", {"the stored hot key is damaged: ", "מקש הקיצור השמור פגום: "}, facts.settingsPath),
        {"quit Lexwend, delete that file, and start it again",
         "לצאת מ־Lexwend, למחוק את הקובץ ולהפעיל אותה מחדש"});
  }
  const auto code = Settings::hotKeyCode();
  const auto modifiers = Settings::hotKeyModifiers();
  const std::string name = HotKeyCenter::displayName(code, modifiers);
  if (!platform::hotKeyService().whyNoPressComes().empty()) {
    return finding(
        "hotKey",
        with(name + ": ", {"no press of it reaches Lexwend", "שום לחיצה עליו לא מגיעה ל־Lexwend"}, ""),
        {"do what is said above about the session", "לעשות מה שנאמר למעלה על סביבת העבודה"});
  }
  constexpr std::uint32_t kSignature = 0x4c646f63;  // "Ldoc"
  const bool isFree =
      platform::hotKeyService().registerHotKey(code, modifiers, {kSignature, 1}).status == platform::kNoErr;
  const Sentence choose{"choose another one in the menu of Lexwend, or end the program that holds it",
                        "לבחור מקש אחר בתפריט של Lexwend, או לסגור את התוכנה שמחזיקה בו"};
  if (facts.agentProcess) {
    if (!isFree) return good("hotKey", with(name + ": ", {"held by Lexwend", "בידי Lexwend"}, ""));
    return finding("hotKey",
                   with(name + ": ",
                        {"nobody holds it, although Lexwend runs", "אינו בידי איש, אף ש־Lexwend פועלת"}, ""),
                   {"quit Lexwend and start it again", "לצאת מ־Lexwend ולהפעיל אותה מחדש"});
  }
  if (isFree) return good("hotKey", with(name + ": ", {"free", "פנוי"}, ""));
  return finding(
      "hotKey",
      with(name + ": ",
           {"another program holds it; X11 does not tell which", "בידי תוכנה אחרת; X11 לא מגלה איזו"}, ""),
      choose);
}

Check checkTray(const SessionFacts& facts) {
  if (facts.tray) return good("tray", {"there is a tray for the icon", "יש מגש לסמל"});
  return finding(
      "tray",
      {"nothing shows the icons of programs, so there is no menu",
       "אין מי שמציג סמלים של תוכנות, ולכן אין תפריט"},
      {"GNOME: install gnome-shell-extension-appindicator and switch it on in Extensions; elsewhere: "
       "add the tray (notification area) to the panel. F2 works without it",
       "ב־GNOME: להתקין את gnome-shell-extension-appindicator ולהפעיל אותה ביישום Extensions; בשולחנות "
       "אחרים: להוסיף לפס את המגש (אזור ההתראות). מקש הקיצור פועל גם בלעדיו"});
}

Check checkAutostart(const SessionFacts& facts) {
  if (!facts.autostartIsOn) {
    return note("autostart", {"Lexwend does not start at login", "Lexwend לא עולה עם הכניסה למחשב"},
                {"the menu of Lexwend has an item for it", "יש לזה פריט בתפריט של Lexwend"});
  }
  if (!facts.autostartProgramIsThere) {
    return finding("autostart",
                   with("",
                        {"the entry for the login starts a program that is not there: ",
                         "הרישום להפעלה עם הכניסה למחשב מפעיל תוכנה שאיננה: "},
                        facts.autostartProgram),
                   with("",
                        {"start Lexwend and tick the item again, or delete ",
                         "להפעיל את Lexwend ולסמן את הפריט שוב, או למחוק את "},
                        facts.autostartPath));
  }
  return good("autostart", with("", {"starts at login: ", "עולה עם הכניסה למחשב: "}, facts.autostartProgram));
}

Check checkSettings(const SessionFacts& facts) {
  namespace fs = std::filesystem;
  std::error_code error;
  const bool exists = fs::exists(facts.settingsPath, error);
  const bool isUsable = !exists || (fs::is_regular_file(facts.settingsPath, error) &&
                                    access(facts.settingsPath.c_str(), R_OK | W_OK) == 0);
  if (!isUsable) {
    return finding(
        "settings",
        with("", {"the settings cannot be read or written: ", "אי אפשר לקרוא את ההגדרות או לכתוב אותן: "},
             facts.settingsPath),
        {"make it a file of your own, or delete it", "להפוך אותו לקובץ רגיל שלך, או למחוק אותו"});
  }
  if (Settings::compatMode()) {
    return note("settings",
                {"compatibility mode is on: every fix goes through the clipboard",
                 "מצב תאימות מופעל: כל תיקון עובר דרך לוח העריכה"},
                {"switch it off in the menu if fixes are slow", "לכבות אותו בתפריט אם התיקונים איטיים"});
  }
  if (!Settings::switchLayoutAfter()) {
    return note("settings", {"the keyboard layout does not follow a fix: that is switched off in the menu",
                             "שפת המקלדת לא מתחלפת אחרי תיקון: זה כבוי בתפריט"});
  }
  return good("settings", {facts.settingsPath + (exists ? "" : ": not there yet, the defaults apply"),
                           facts.settingsPath + (exists ? "" : ": עוד לא קיים, ההגדרות הרגילות בתוקף")});
}

/// The last lines that tell how a fix ended.
std::string lastOutcomes(const std::string& path) {
  std::ifstream file(path);
  std::deque<std::string> kept;
  for (std::string line; std::getline(file, line);) {
    if (line.find(" fix: ") == std::string::npos || line.find(" fix: front=") != std::string::npos) continue;
    kept.push_back(std::move(line));
    if (kept.size() > kShownOutcomes) kept.pop_front();
  }
  return joined({kept.begin(), kept.end()});
}

Check checkLog() {
  namespace fs = std::filesystem;
  const std::string path = Log::url();
  std::error_code error;
  const bool exists = fs::exists(path, error);
  const std::string folder = fs::path(path).parent_path().string();
  const std::string& written = exists ? path : folder;
  if (path.empty() || access(written.c_str(), W_OK) != 0) {
    return finding("log", with("", {"nothing can be written to the log ", "אי אפשר לכתוב ליומן "}, path),
                   with("", {"make its folder: mkdir -p ", "ליצור את התיקייה: mkdir -p "}, folder));
  }
  const std::string outcomes = exists ? lastOutcomes(path) : "";
  if (outcomes.empty()) return good("log", with(path, {": no fix yet", ": עוד לא היה תיקון"}, ""));
  return good("log", with(path, {"; the last outcomes: ", "; התוצאות האחרונות: "}, outcomes));
}

Check checkFonts(const SessionFacts& facts) {
  if (facts.hebrewFont) {
    return good("fonts", {"there is a font with Hebrew letters", "יש גופן עם אותיות עבריות"});
  }
  return finding("fonts",
                 {"no font has Hebrew letters, so the menu cannot be read",
                  "אין גופן עם אותיות עבריות, ולכן אי אפשר לקרוא את התפריט"},
                 {"install one, for example fonts-dejavu-core or culmus",
                  "להתקין גופן, למשל fonts-dejavu-core או culmus"});
}

}  // namespace

std::vector<Check> examine(const CheckOptions& options) {
  const SessionFacts facts = platform::diagnosis().facts();
  std::vector<Check> checks{checkAgent(facts)};
  // Without a display the others would only say the same again.
  if (facts.displayAnswers || facts.limit) checks.push_back(checkSession(facts));
  checks.push_back(checkDisplay(facts));
  if (facts.displayAnswers) {
    checks.push_back(checkHotKey(facts));
    checks.push_back(checkLayouts());
    checks.push_back(checkTable());
    checks.push_back(checkBuses(facts));
    checks.push_back(checkFocus(options));
    checks.push_back(checkTray(facts));
  }
  checks.push_back(checkAutostart(facts));
  checks.push_back(checkSettings(facts));
  checks.push_back(checkLog());
  checks.push_back(checkFonts(facts));
  return checks;
}

bool hasFindings(const std::vector<Check>& checks) {
  return std::any_of(checks.begin(), checks.end(),
                     [](const Check& check) { return check.state == CheckState::finding; });
}

}  // namespace lexwend

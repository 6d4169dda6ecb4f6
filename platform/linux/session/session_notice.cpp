// SPDX-License-Identifier: MIT
#include "platform/linux/session/session_notice.h"

#include <cstdlib>
#include <string>

#include "platform/linux/session/buses.h"
#include "platform/linux/session/glib_ref.h"
#include "platform/linux/session/identity.h"

namespace lexwend::platform {

const SessionNotice kWaylandWithX11 = {
    "this is a Wayland session: the hot key and the fix work in X11 (XWayland) windows only; in Wayland "
    "windows nothing is read or changed",
    "זו סביבת Wayland: מקש הקיצור והתיקון פועלים רק בחלונות X11 (XWayland). בחלונות Wayland שום דבר לא נקרא "
    "ולא משתנה."};
const SessionNotice kNoGrant = {
    "the compositor does not let Lexwend press keys, because no installed entry of an application names its "
    "program: text that can be replaced through the clipboard only stays as it is",
    "סביבת העבודה לא מרשה ל־Lexwend ללחוץ על מקשים, כי היא לא מותקנת ביישומים. טקסט שאפשר להחליף רק דרך לוח "
    "העריכה לא יתוקן."};
const SessionNotice kHowToGetGrant = {
    "install Lexwend to a path without spaces (its package, or cmake --install), quit it, and start it from "
    "the applications menu",
    "להתקין את Lexwend בנתיב ללא רווחים (מחבילה, או ב־cmake --install), לצאת ממנה ולהפעיל אותה מתפריט "
    "היישומים"};
const SessionLimit kNoExtension = {
    {"GNOME lets no program take a hot key, and its extension Lexwend is not switched on",
     "GNOME לא מרשה לתוכנה לקבל מקש קיצור, וההרחבה Lexwend של GNOME לא מופעלת. אפשר להפעיל אותה "
     "(gnome-extensions enable lexwend@lexwend.org ואז להיכנס למחשב מחדש), או להגדיר בהגדרות המקלדת קיצור "
     "לפקודה lexwend --fix."},
    {"switch the extension on (gnome-extensions enable lexwend@lexwend.org, then log in again), or bind a "
     "key "
     "to the command lexwend --fix in the keyboard settings",
     "להפעיל את ההרחבה (gnome-extensions enable lexwend@lexwend.org ואז להיכנס למחשב מחדש), או להגדיר "
     "בהגדרות "
     "המקלדת קיצור לפקודה lexwend --fix"}};
const SessionLimit kNoHotKey = {
    {"this compositor lets no program take a hot key or select a layout",
     "סביבת העבודה לא מרשה לתוכנה לקבל מקש קיצור או להחליף את פריסת המקלדת. אפשר להגדיר בה קיצור לפקודה "
     "lexwend --fix."},
    {"bind a key to the command lexwend --fix in the compositor's own configuration",
     "להגדיר בסביבת העבודה קיצור לפקודה lexwend --fix"}};
const SessionNotice kWaylandOnly = {
    "this Wayland session has no X11 display (XWayland), so the hot key and the fix cannot work here; "
    "conversion on the command line works: lexwend-convert",
    "בסביבת Wayland הזו אין תצוגת X11 (XWayland), ולכן מקש הקיצור והתיקון לא יכולים לפעול בה."};
const SessionNotice kNoDisplay = {"no X11 display can be opened; the agent needs one (DISPLAY)", ""};

bool sessionIsWayland() {
  const char* display = std::getenv("WAYLAND_DISPLAY");
  const char* type = std::getenv("XDG_SESSION_TYPE");
  return (display != nullptr && display[0] != '\0') ||
         (type != nullptr && std::string_view(type) == "wayland");
}

// Whoever shows the sentence takes its direction from its first letter, which may be that of a Latin name.
constexpr std::string_view kRightToLeftMark = "\u200F";

void notifyUser(std::string_view sentence) {
  GDBusConnection* bus = sessionBus();
  if (bus == nullptr || sentence.empty()) return;
  const std::string name(kDisplayName);
  GVariantBuilder noActions;
  GVariantBuilder noHints;
  g_variant_builder_init(&noActions, G_VARIANT_TYPE("as"));
  g_variant_builder_init(&noHints, G_VARIANT_TYPE("a{sv}"));
  constexpr gint32 kServersChoice = -1;  // of how long it stays
  // Not a flush, which would have no time limit.
  const GVariantRef answer(g_dbus_connection_call_sync(
      bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications", "org.freedesktop.Notifications",
      "Notify",
      g_variant_new("(susssasa{sv}i)", name.c_str(), 0U, std::string(kIdentifier).c_str(), name.c_str(),
                    (std::string(kRightToLeftMark) + std::string(sentence)).c_str(), &noActions, &noHints,
                    kServersChoice),
      nullptr, G_DBUS_CALL_FLAGS_NONE, kBusCallTimeout, nullptr, nullptr));
}

}  // namespace lexwend::platform

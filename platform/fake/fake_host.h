// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/fake/fake_accessibility.h"
#include "platform/fake/fake_alerts.h"
#include "platform/fake/fake_application.h"
#include "platform/fake/fake_apps.h"
#include "platform/fake/fake_date_formatter.h"
#include "platform/fake/fake_diagnosis.h"
#include "platform/fake/fake_files.h"
#include "platform/fake/fake_hot_keys.h"
#include "platform/fake/fake_input_sources.h"
#include "platform/fake/fake_key_events.h"
#include "platform/fake/fake_key_monitor.h"
#include "platform/fake/fake_login_item.h"
#include "platform/fake/fake_pasteboard.h"
#include "platform/fake/fake_recorder_window.h"
#include "platform/fake/fake_run_loop.h"
#include "platform/fake/fake_running_applications.h"
#include "platform/fake/fake_running_instance.h"
#include "platform/fake/fake_secure_input.h"
#include "platform/fake/fake_status_bar.h"
#include "platform/fake/fake_system.h"
#include "platform/fake/fake_user_defaults.h"
#include "platform/fake/fake_workspace.h"
#include "platform/host.h"

namespace lexwend::platform {

/// What received a key that the user pressed.
enum class KeyFate { ownHotKey, othersHotKey, ownWindow, application, nobody };

/// An operating system in memory. Each accessor returns a service that is also the test's control over it.
/// This class itself controls what belongs to no single service. Time stands still until somebody sleeps or
/// advances it. One thread only.
///
///   FakeHost host;
///   HostScope scope(host);
///   auto editor = host.apps().open("Editor", "com.example.editor", "akuo");
///   editor->focus()->selectAll();
///   ... run the code under test ...
///   host.advance(500ms);
///   EXPECT_EQ(editor->focus()->text(), "שלום");
///
/// Its destructor reports what was prepared and not used, and what could not be done (fake_complaints.h).
class FakeHost : public Host {
 public:
  FakeHost();
  ~FakeHost() override;
  FakeHost(const FakeHost&) = delete;
  FakeHost& operator=(const FakeHost&) = delete;

  FakeInputSources& inputSourceService() override { return inputSources_; }
  FakeAccessibility& accessibility() override { return accessibility_; }
  FakeSecureInput& secureInput() override { return secureInput_; }
  FakeKeyEvents& keyEvents() override { return keyEvents_; }
  FakeHotKeys& hotKeyService() override { return hotKeys_; }
  FakeStatusBar& statusBar() override { return statusBar_; }
  FakeRecorderWindows& recorderWindows() override { return recorderWindows_; }
  FakeKeyMonitor& keyMonitor() override { return keyMonitor_; }
  FakeAlerts& alerts() override { return alerts_; }
  FakeWorkspace& workspace() override { return workspace_; }
  FakeRunningApplications& runningApplications() override { return runningApplications_; }
  FakeRunningInstance& runningInstance() override { return runningInstance_; }
  FakeUserDefaults& standardUserDefaults() override { return userDefaults_; }
  FakeLoginItem& loginItem() override { return loginItem_; }
  FakeRunLoop& runLoop() override { return runLoop_; }
  FakeApplication& application() override { return application_; }
  FakeFiles& files() override { return files_; }
  FakeDateFormatters& dateFormatters() override { return dateFormatters_; }
  std::shared_ptr<Pasteboard> generalPasteboard() override { return pasteboard_; }
  FakeDiagnosis& diagnosis() override { return diagnosis_; }

  // Controls of a test.
  FakePasteboard& pasteboard() { return *pasteboard_; }
  FakeApps& apps() { return apps_; }
  FakeCallLog& calls() { return system_.calls; }
  FakeComplaints& complaints() { return system_.complaints; }
  FakeClock& clock() { return system_.clock; }
  /// Time passes and the run loop turns.
  void advance(std::chrono::milliseconds duration) { runLoop_.advance(duration); }
  /// The next calls of the operation fail. A failure that is never reached is a complaint.
  void failNext(FakeOperation operation, const FakeFailure& failure = {}) {
    system_.injections.failNext(operation, failure);
  }
  /// The next call of the operation fails with this code.
  void failNext(FakeOperation operation, std::int32_t code) {
    failNext(operation, FakeFailure{.code = code});
  }
  /// The user presses a key. It goes to the program that holds it as a hot key, else to the program's own
  /// window if one has the keyboard, else to the application in front, which copies, pastes or types in the
  /// current layout.
  KeyFate userPresses(KeyCode keyCode, Modifiers modifiers = kNoModifiers);
  /// The process ends. The system drops its hot keys, observers, menu-bar item and deferred work. The user's
  /// and the other applications' state is kept, so another run may follow.
  void processEnds();
  /// The program's log file; empty when there is none.
  std::string logFile() const;
  /// The messages of the log's lines, without the timestamps.
  std::vector<std::string> logMessages() const;

  /// Returns all complaints so far, unused preparations included, and forgets them. The destructor then
  /// reports only what is new. For the tests of this host.
  std::vector<std::string> settle();

 private:
  std::vector<std::string> collectComplaints() const;

  FakeSystem system_;
  std::shared_ptr<FakePasteboard> pasteboard_;
  FakeApps apps_;
  FakeInputSources inputSources_;
  FakeAccessibility accessibility_;
  FakeSecureInput secureInput_;
  FakeKeyEvents keyEvents_;
  FakeHotKeys hotKeys_;
  FakeApplication application_;
  FakeStatusBar statusBar_;
  FakeRecorderWindows recorderWindows_;
  FakeKeyMonitor keyMonitor_;
  FakeAlerts alerts_;
  FakeWorkspace workspace_;
  FakeRunningApplications runningApplications_;
  FakeRunningInstance runningInstance_;
  FakeUserDefaults userDefaults_;
  FakeLoginItem loginItem_;
  FakeRunLoop runLoop_;
  FakeFiles files_;
  FakeDateFormatters dateFormatters_;
  FakeDiagnosis diagnosis_;
  bool settled_ = false;
};

}  // namespace lexwend::platform

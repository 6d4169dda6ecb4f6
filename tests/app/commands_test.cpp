// SPDX-License-Identifier: MIT
// What other processes ask of the agent, and an agent without an icon.

#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/agent.h"

namespace lexwend::tests {
namespace {

using platform::InstanceAnswer;
using platform::InstanceCommand;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct Commanded : Agent {
  Commanded() { launch(); }
  InstanceAnswer arrives(InstanceCommand command) { return host.runningInstance().arrives(command); }
};

TEST(Commands, fixDoesWhatTheKeyDoesOnceTheLauncherHasGone) {
  Commanded a;
  const auto editor = a.openEditor("akuo");
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::taken);
  EXPECT_EQ(editor->focus()->text(), "akuo");
  a.host.advance(milliseconds(250));
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(a.lastLogLine(), "fix: success target=he");
}

TEST(Commands, secondFixIsDroppedUntilTheFirstHasRun) {
  Commanded a;
  const auto editor = a.openEditor("akuo");
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::taken);
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::dropped);
  a.host.advance(milliseconds(1000));
  EXPECT_EQ(editor->focus()->text(), "שלום");
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::taken);
  a.host.advance(milliseconds(250));
}

TEST(Commands, fixIsDroppedWhileOneRuns) {
  Commanded a;
  const auto pause = a.host.runningInstance().dropFixes();
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::dropped);
}

TEST(Commands, keyPressedMeanwhileIsTheOnlyFix) {
  Commanded a;
  const auto editor = a.openEditor("akuo");
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::taken);
  a.host.userPresses(kF2);
  EXPECT_EQ(editor->focus()->text(), "שלום");
  editor->focus()->selectAll();
  a.host.advance(milliseconds(250));
  EXPECT_EQ(editor->focus()->text(), "שלום");
}

TEST(Commands, fixIsDroppedWhileTheRecorderIsOpen) {
  Commanded a;
  a.openEditor("akuo");
  EXPECT_EQ(a.arrives(InstanceCommand::settings), InstanceAnswer::taken);
  EXPECT_EQ(a.arrives(InstanceCommand::fix), InstanceAnswer::dropped);
  a.host.advance(milliseconds(250));
  EXPECT_THAT(a.fixLines(), IsEmpty());
}

TEST(Commands, settingsOpensTheRecorder) {
  Commanded a;
  EXPECT_EQ(a.arrives(InstanceCommand::settings), InstanceAnswer::taken);
  EXPECT_TRUE(a.host.hotKeyService().registered().empty());
}

TEST(Commands, menuOpensTheMenu) {
  Commanded a;
  EXPECT_EQ(a.arrives(InstanceCommand::menu), InstanceAnswer::taken);
  EXPECT_EQ(a.host.calls().count("statusItem.openMenu"), 1U);
}

TEST(Commands, quitEndsTheAgent) {
  Commanded a;
  EXPECT_EQ(a.arrives(InstanceCommand::quit), InstanceAnswer::taken);
  EXPECT_TRUE(a.host.application().terminated);
}

TEST(Commands, areAnsweredByNobodyAfterTheAgent) {
  Commanded a;
  a.delegate.reset();
  EXPECT_EQ(a.arrives(InstanceCommand::quit), InstanceAnswer::nobodyRuns);
}

TEST(AgentWithoutAnIcon, saysOnceThatItRunsAndWhichKeyDoesWhat) {
  Agent a;
  a.host.statusBar().showsItems = false;
  a.launch();
  a.host.advance(milliseconds(7000));
  EXPECT_THAT(a.host.application().notifications, IsEmpty());
  a.host.advance(milliseconds(60000));
  EXPECT_THAT(a.host.application().notifications, ElementsAre(HasSubstr(" ולחץ על F2 כדי לתקן ")));
}

TEST(AgentWithAnIcon, thatComesLateSaysNothing) {
  Agent a;
  a.host.statusBar().showsItems = false;
  a.launch();
  a.host.statusBar().showsItems = true;
  a.host.advance(milliseconds(60000));
  EXPECT_THAT(a.host.application().notifications, IsEmpty());
}

TEST(AgentWithAnIcon, saysNothing) {
  Agent a;
  a.launch();
  a.host.advance(milliseconds(60000));
  EXPECT_THAT(a.host.application().notifications, IsEmpty());
}

}  // namespace
}  // namespace lexwend::tests

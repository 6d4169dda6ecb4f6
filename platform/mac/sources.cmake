# SPDX-License-Identifier: MIT
# The one list of the host's files, for the build on macOS and for the tests elsewhere.
set(LEXWEND_MAC_SOURCES
  accessibility.mm alerts.mm application.mm cf_text.mm date_formatter.mm files.mm hot_key_service.mm input_sources.mm
  key_events.mm key_monitor.mm login_item.mm mac_host.mm own_windows.mm pasteboard.mm recorder_window.mm run_loop.mm
  running_applications.mm secure_input.mm status_item.mm user_defaults.mm workspace.mm)

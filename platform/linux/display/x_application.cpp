// SPDX-License-Identifier: MIT
#include "platform/linux/display/x_application.h"

#include <xcb/res.h>

#include "platform/linux/display/x11_connection.h"

namespace lexwend::platform {

XApplication applicationOf(xcb_connection_t* connection, xcb_window_t window) {
  // The mask is told for the own ids, and the server cuts those of everybody alike.
  XApplication application{window & ~xcb_get_setup(connection)->resource_id_mask, std::nullopt};
  const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_res_id);
  if (window == XCB_WINDOW_NONE || extension == nullptr || extension->present == 0) return application;
  const xcb_res_client_id_spec_t question{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
  const XcbReply<xcb_res_query_client_ids_reply_t> reply(xcb_res_query_client_ids_reply(
      connection, xcb_res_query_client_ids(connection, 1, &question), nullptr));
  if (!reply) return application;
  for (auto it = xcb_res_query_client_ids_ids_iterator(reply.get()); it.rem > 0;
       xcb_res_client_id_value_next(&it)) {
    const bool isProcess = (it.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0 &&
                           xcb_res_client_id_value_value_length(it.data) == 1;
    // 0 stands for a process of another namespace.
    if (isProcess && *xcb_res_client_id_value_value(it.data) != 0) {
      application.process = *xcb_res_client_id_value_value(it.data);
    }
  }
  return application;
}

bool mayBeTheSame(const XApplication& one, const XApplication& other) {
  if (one.process && other.process) return *one.process == *other.process;
  return one.client == other.client || one.process == other.process;
}

}  // namespace lexwend::platform

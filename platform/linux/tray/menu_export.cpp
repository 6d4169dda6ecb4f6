// SPDX-License-Identifier: MIT
#include "platform/linux/tray/menu_export.h"

#include <QString>
#include <QStringList>

#include "platform/linux/tray/isolated_combination.h"
#include "platform/linux/tray/menu.h"

namespace lexwend::platform {
namespace {

constexpr char kInterface[] = "com.canonical.dbusmenu";
constexpr guint32 kVersion = 3;
constexpr std::int32_t kMenuItself = 0;  // its entries are counted from 1
constexpr qsizetype kLongestLine = 45;   // in UTF-16 units, about as long as the titles

constexpr char kMenuIntrospection[] = R"xml(<node><interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
    <arg name="parentId" type="i" direction="in"/><arg name="recursionDepth" type="i" direction="in"/>
    <arg name="propertyNames" type="as" direction="in"/>
    <arg name="revision" type="u" direction="out"/><arg name="layout" type="(ia{sv}av)" direction="out"/>
  </method>
  <method name="GetGroupProperties">
    <arg name="ids" type="ai" direction="in"/><arg name="propertyNames" type="as" direction="in"/>
    <arg name="properties" type="a(ia{sv})" direction="out"/>
  </method>
  <method name="GetProperty">
    <arg name="id" type="i" direction="in"/><arg name="name" type="s" direction="in"/>
    <arg name="value" type="v" direction="out"/>
  </method>
  <method name="Event">
    <arg name="id" type="i" direction="in"/><arg name="eventId" type="s" direction="in"/>
    <arg name="data" type="v" direction="in"/><arg name="timestamp" type="u" direction="in"/>
  </method>
  <method name="EventGroup">
    <arg name="events" type="a(isvu)" direction="in"/><arg name="idErrors" type="ai" direction="out"/>
  </method>
  <method name="AboutToShow">
    <arg name="id" type="i" direction="in"/><arg name="needUpdate" type="b" direction="out"/>
  </method>
  <method name="AboutToShowGroup">
    <arg name="ids" type="ai" direction="in"/>
    <arg name="updatesNeeded" type="ai" direction="out"/><arg name="idErrors" type="ai" direction="out"/>
  </method>
  <signal name="ItemsPropertiesUpdated">
    <arg name="updatedProps" type="a(ia{sv})"/><arg name="removedProps" type="a(ias)"/>
  </signal>
  <signal name="LayoutUpdated"><arg name="revision" type="u"/><arg name="parent" type="i"/></signal>
  </interface></node>)xml";

GDBusInterfaceInfo* menuInterface() {
  static GDBusNodeInfo* const kNode = g_dbus_node_info_new_for_xml(kMenuIntrospection, nullptr);
  return kNode->interfaces[0];
}

GVariantRef child(GVariant* container, gsize index) {
  return GVariantRef(g_variant_get_child_value(container, index));
}

/// An underscore would mark a mnemonic. A panel draws its menus in the direction of its own language, and in
/// one from left to right "…" would stand at the beginning of the Hebrew.
std::string labelOf(const std::string& title) {
  const QString text = QString::fromStdString(title);
  const QString label = isolatedRightToLeft(withIsolated(text, combinationIn(text)));
  return QString(label).replace('_', "__").toStdString();
}

/// The text in lines that are no wider than a menu.
QStringList wrapped(const QString& text) {
  QStringList lines;
  for (const QString& word : text.split(' ')) {
    if (lines.isEmpty() || lines.back().size() + word.size() >= kLongestLine) {
      lines.push_back(word);
    } else {
      lines.back() += ' ' + word;
    }
  }
  return lines;
}

/// A panel shows the tooltip of no item, so what an item tells follows in lines of their own.
std::string labelOf(const LinuxMenuItem& item) {
  std::string label = labelOf(item.title());
  if (item.toolTip().empty()) return label;
  for (const QString& line : wrapped(QString::fromStdString(item.toolTip()))) {
    label += '\n' + labelOf(line.toStdString());
  }
  return label;
}

class Properties {
 public:
  Properties() { g_variant_builder_init(&builder_, G_VARIANT_TYPE_VARDICT); }
  void add(const char* name, GVariant* value) { g_variant_builder_add(&builder_, "{sv}", name, value); }
  void add(const char* name, const char* value) { add(name, g_variant_new_string(value)); }
  void add(const char* name, bool value) { add(name, g_variant_new_boolean(value ? TRUE : FALSE)); }
  GVariantRef end() { return GVariantRef(g_variant_ref_sink(g_variant_builder_end(&builder_))); }

 private:
  GVariantBuilder builder_;
};

/// Command-Q as "Control" and "Q": one shortcut of two keys.
GVariant* shortcut(const std::string& keyEquivalent) {
  GVariantBuilder shortcuts;
  g_variant_builder_init(&shortcuts, G_VARIANT_TYPE("aas"));
  if (!keyEquivalent.empty()) {
    const std::string key = QString::fromStdString(keyEquivalent).toUpper().toStdString();
    const char* const keys[] = {"Control", key.c_str()};
    g_variant_builder_add_value(&shortcuts, g_variant_new_strv(keys, std::size(keys)));
  }
  return g_variant_builder_end(&shortcuts);
}

/// Every property with its value, even where the value is the default of the protocol. A property that
/// returns to its default then needs no removal.
GVariantRef propertiesOf(const LinuxMenuItem& item) {
  Properties said;
  said.add("type", "standard");
  said.add("label", labelOf(item).c_str());
  said.add("enabled", item.isEnabled());
  said.add("visible", !item.isHidden());
  said.add("shortcut", shortcut(item.keyEquivalent()));
  said.add("toggle-type", item.checked() ? "checkmark" : "");
  said.add("toggle-state", g_variant_new_int32(item.checked().value_or(false) ? 1 : 0));
  return said.end();
}

GVariantRef propertiesOfSeparator() {
  Properties said;
  said.add("type", "separator");
  return said.end();
}

GVariantRef propertiesOfMenu() {
  Properties said;
  said.add("children-display", "submenu");
  return said.end();
}

/// The properties that are asked for by name; all of them when no name is given.
GVariantRef named(GVariantRef properties, GVariant* names) {
  if (g_variant_n_children(names) == 0) return properties;
  Properties wanted;
  for (gsize i = 0; i < g_variant_n_children(names); ++i) {
    const GVariantRef name = child(names, i);
    const char* text = g_variant_get_string(name.get(), nullptr);
    const GVariantRef value(g_variant_lookup_value(properties.get(), text, nullptr));
    if (value != nullptr) wanted.add(text, value.get());
  }
  return wanted.end();
}

std::int32_t number(GVariant* value) {
  return g_variant_get_int32(value);
}

}  // namespace

MenuExport::MenuExport(GDBusConnection* bus) : bus_(bus) {
  static constexpr GDBusInterfaceVTable kMenu = {
      &MenuExport::methodCalled, &MenuExport::propertyAsked, nullptr, {}};
  object_ = g_dbus_connection_register_object(bus_, kPath, menuInterface(), &kMenu, this, nullptr, nullptr);
}

MenuExport::~MenuExport() {
  if (object_ != 0) g_dbus_connection_unregister_object(bus_, object_);
}

void MenuExport::setMenu(std::shared_ptr<LinuxMenu> menu) {
  menu_ = std::move(menu);
  menuChanged_ = std::make_shared<std::function<void()>>([this] { changed(); });
  if (menu_ != nullptr) menu_->observe(menuChanged_);
  announceNewLayout();
}

std::int32_t MenuExport::end() const {
  return menu_ != nullptr ? static_cast<std::int32_t>(menu_->entries().size()) + 1 : kMenuItself + 1;
}

std::shared_ptr<LinuxMenuItem> MenuExport::item(std::int32_t id) const {
  return id == kMenuItself ? nullptr : menu_->entries()[static_cast<std::size_t>(id) - 1];
}

GVariantRef MenuExport::properties(std::int32_t id) const {
  if (id == kMenuItself) return propertiesOfMenu();
  const auto entry = item(id);
  return entry != nullptr ? propertiesOf(*entry) : propertiesOfSeparator();
}

void MenuExport::announceNewLayout() {
  announced_.clear();
  for (std::int32_t id = kMenuItself; id < end(); ++id) announced_.push_back(properties(id));
  emit("LayoutUpdated", g_variant_new("(ui)", ++revision_, kMenuItself));
}

void MenuExport::changed() {
  if (announced_.size() != static_cast<std::size_t>(end())) {
    announceNewLayout();
    return;
  }
  GVariantBuilder updated;
  GVariantBuilder removed;
  g_variant_builder_init(&updated, G_VARIANT_TYPE("a(ia{sv})"));
  g_variant_builder_init(&removed, G_VARIANT_TYPE("a(ias)"));
  bool anything = false;
  for (std::int32_t id = kMenuItself; id < end(); ++id) {
    GVariantRef& known = announced_[static_cast<std::size_t>(id)];
    GVariantRef now = properties(id);
    if (g_variant_equal(known.get(), now.get()) != FALSE) continue;
    g_variant_builder_add(&updated, "(i@a{sv})", id, now.get());
    known = std::move(now);
    anything = true;
  }
  GVariant* arguments = g_variant_ref_sink(g_variant_new("(a(ia{sv})a(ias))", &updated, &removed));
  const GVariantRef owner(arguments);
  if (anything) emit("ItemsPropertiesUpdated", arguments);
}

void MenuExport::emit(const char* signal, GVariant* arguments) {
  g_dbus_connection_emit_signal(bus_, nullptr, kPath, kInterface, signal, arguments, nullptr);
}

GVariant* MenuExport::layout(std::int32_t id, std::int32_t depth, GVariant* names) const {
  GVariantBuilder children;
  g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
  if (id == kMenuItself && depth != 0) {
    for (std::int32_t entry = kMenuItself + 1; entry < end(); ++entry) {
      g_variant_builder_add(&children, "v", layout(entry, 0, names));
    }
  }
  return g_variant_new("(i@a{sv}av)", id, named(properties(id), names).get(), &children);
}

GVariant* MenuExport::groupProperties(GVariant* ids, GVariant* names) const {
  GVariantBuilder group;
  g_variant_builder_init(&group, G_VARIANT_TYPE("a(ia{sv})"));
  const auto add = [&](std::int32_t id) {
    if (has(id)) g_variant_builder_add(&group, "(i@a{sv})", id, named(properties(id), names).get());
  };
  for (gsize i = 0; i < g_variant_n_children(ids); ++i) add(number(child(ids, i).get()));
  if (g_variant_n_children(ids) == 0) {
    for (std::int32_t id = kMenuItself; id < end(); ++id) add(id);
  }
  return g_variant_builder_end(&group);
}

std::shared_ptr<LinuxMenuItem> MenuExport::chosen(std::int32_t id, const char* event) const {
  const auto entry = item(id);
  const bool isChosen =
      std::string_view(event) == "clicked" && entry != nullptr && entry->isEnabled() && !entry->isHidden();
  return isChosen ? entry : nullptr;
}

void MenuExport::groupAsked(const std::string_view method, GVariant* arguments,
                            GDBusMethodInvocation* invocation) {
  const GVariantRef group = child(arguments, 0);
  if (method == "GetGroupProperties") {
    GVariant* const found = groupProperties(group.get(), child(arguments, 1).get());
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(@a(ia{sv}))", found));
    return;
  }
  const bool isOfEvents = method == "EventGroup";
  std::vector<std::shared_ptr<LinuxMenuItem>> toChoose;
  GVariantBuilder unknown;
  g_variant_builder_init(&unknown, G_VARIANT_TYPE("ai"));
  for (gsize i = 0; i < g_variant_n_children(group.get()); ++i) {
    const GVariantRef member = child(group.get(), i);
    const std::int32_t id = number(isOfEvents ? child(member.get(), 0).get() : member.get());
    if (!has(id)) {
      g_variant_builder_add(&unknown, "i", id);
    } else if (isOfEvents) {
      toChoose.push_back(chosen(id, g_variant_get_string(child(member.get(), 1).get(), nullptr)));
    }
  }
  g_dbus_method_invocation_return_value(
      invocation, isOfEvents ? g_variant_new("(ai)", &unknown) : g_variant_new("(aiai)", nullptr, &unknown));
  // Last, because an item may destroy this menu.
  for (const auto& entry : toChoose) {
    if (entry != nullptr) entry->choose();
  }
}

void MenuExport::entryAsked(std::string_view method, GVariant* arguments, GDBusMethodInvocation* invocation) {
  const std::int32_t id = number(child(arguments, 0).get());
  const auto answer = [invocation](GVariant* value) {
    g_dbus_method_invocation_return_value(invocation, value);
  };
  const auto refuse = [invocation](const char* reason) {
    g_dbus_method_invocation_return_dbus_error(invocation, "org.freedesktop.DBus.Error.InvalidArgs", reason);
  };
  if (!has(id)) {
    refuse("the menu has no such entry");
  } else if (method == "GetLayout") {
    GVariant* const found = layout(id, number(child(arguments, 1).get()), child(arguments, 2).get());
    answer(g_variant_new("(u@(ia{sv}av))", revision_, found));
  } else if (method == "GetProperty") {
    const GVariantRef name = child(arguments, 1);
    const char* const text = g_variant_get_string(name.get(), nullptr);
    const GVariantRef value(g_variant_lookup_value(properties(id).get(), text, nullptr));
    if (value == nullptr) {
      refuse("the entry has no such property");
    } else {
      answer(g_variant_new("(v)", value.get()));
    }
  } else if (method == "AboutToShow") {
    answer(g_variant_new("(b)", FALSE));  // every change was announced
  } else {
    answer(nullptr);
    // Last, because the item may destroy this menu.
    const auto entry = chosen(id, g_variant_get_string(child(arguments, 1).get(), nullptr));
    if (entry != nullptr) entry->choose();
  }
}

void MenuExport::methodCalled(GDBusConnection*, const char*, const char*, const char*, const char* method,
                              GVariant* arguments, GDBusMethodInvocation* invocation, void* data) {
  auto& self = *static_cast<MenuExport*>(data);
  const std::string_view name = method;
  if (name == "GetGroupProperties" || name == "EventGroup" || name == "AboutToShowGroup") {
    self.groupAsked(name, arguments, invocation);
  } else {
    self.entryAsked(name, arguments, invocation);
  }
}

GVariant* MenuExport::propertyAsked(GDBusConnection*, const char*, const char*, const char*,
                                    const char* property, GError**, void*) {
  const std::string_view name = property;
  if (name == "Version") return g_variant_new_uint32(kVersion);
  if (name == "TextDirection") return g_variant_new_string("rtl");
  if (name == "Status") return g_variant_new_string("normal");
  return g_variant_new_strv(nullptr, 0);  // IconThemePath
}

}  // namespace lexwend::platform

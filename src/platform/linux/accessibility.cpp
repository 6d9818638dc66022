#include <gtk/gtk.h>

#include <algorithm>
#include <memory>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

constexpr double UsualResolution = 96;

AtkRole RoleOf(ControlKind drawn) {
    if (drawn == ControlKind::PickList) return ATK_ROLE_COMBO_BOX;
    return drawn == ControlKind::List ? ATK_ROLE_LIST : ATK_ROLE_LABEL;
}

// The focus goes to the child of a scrolled window.
AtkObject* ObjectOf(WindowHandle control) {
    auto* widget = reinterpret_cast<GtkWidget*>(control);
    if (GTK_IS_SCROLLED_WINDOW(widget)) widget = gtk_bin_get_child(GTK_BIN(widget));
    return gtk_widget_get_accessible(widget);
}

using Text = std::unique_ptr<char, decltype(&g_free)>;

Text Utf8(const std::wstring& text) {
    static_assert(sizeof(wchar_t) == sizeof(gunichar));
    auto* characters = reinterpret_cast<const gunichar*>(text.c_str());
    return {g_ucs4_to_utf8(characters, -1, nullptr, nullptr, nullptr), g_free};
}

}  // namespace

double TextScale() {
    // Below 0: no scale is set.
    return std::max(1.0, gdk_screen_get_resolution(gdk_screen_get_default()) / UsualResolution);
}

void Describe(WindowHandle control, ControlKind kind, const std::wstring& name,
              const std::wstring& shown) {
    AtkObject* object = ObjectOf(control);
    if (Text text = Utf8(name)) atk_object_set_name(object, text.get());
    if (kind == ControlKind::Native) return;
    atk_object_set_role(object, RoleOf(kind));
    if (Text text = Utf8(shown)) atk_object_set_description(object, text.get());
}

}  // namespace quirkmeter::platform

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <dlfcn.h>

#include "native.h"

namespace quirkmeter::native {

namespace {

// The program builds without GTK's headers, so this looks its functions up by name.
template <typename Function>
Function* Gtk(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

void Respond(const wxDialog* dialog, int response) {
    Gtk<void(void*, int)>("gtk_dialog_response")(dialog->GetHandle(), response);
}

}  // namespace

wxString Text(const wxWindow* window) {
    return window->GetLabel();
}

wxString Text(const wxMessageDialogBase* box) {
    return box->GetMessage();
}

bool ShowsWarning(const wxMessageDialogBase* box) {
    struct List {
        void* Data;
        List* Next;
    };
    void* text = Gtk<void*(void*)>("gtk_message_dialog_get_message_area")(box->GetHandle());
    void* row = Gtk<void*(void*)>("gtk_widget_get_parent")(text);
    const char* icon = nullptr;
    for (auto* part = Gtk<List*(void*)>("gtk_container_get_children")(row); part; part = part->Next)
        if (part->Data != text && Gtk<int(void*)>("gtk_widget_get_mapped")(part->Data))
            Gtk<void(void*, const char**, int*)>("gtk_image_get_icon_name")(part->Data, &icon,
                                                                            nullptr);
    return icon && std::string(icon) == "dialog-warning";
}

bool HasKeyboard(const wxTopLevelWindow* window) {
    return Gtk<int(void*)>("gtk_window_is_active")(window->GetHandle());
}

bool ShowsFile(const wxFileDialog* dialog, const std::string& name) {
    return dialog->GetPath().AfterLast('/') == name;
}

void PreferDarkTheme(bool dark) {
    void* settings = Gtk<void*()>("gtk_settings_get_default")();
    Gtk<void(void*, const char*, ...)>("g_object_set")(
        settings, "gtk-application-prefer-dark-theme", int{dark}, nullptr);
}

wxColour ColourAt(wxPoint place) {
    Display* server = XOpenDisplay(nullptr);
    XImage* image =
        XGetImage(server, DefaultRootWindow(server), place.x, place.y, 1, 1, AllPlanes, ZPixmap);
    unsigned long colour = XGetPixel(image, 0, 0);
    XDestroyImage(image);
    XCloseDisplay(server);
    auto part = [colour](int bits) { return static_cast<unsigned char>(colour >> bits); };
    return {part(16), part(8), part(0)};
}

// The point opens the dialog's text field also when the dialog opens a file.
void TypeFileName(wxUIActionSimulator& keyboard, const std::string& name) {
    keyboard.Text(("./" + name).c_str());
}

// The Enter key might only close GTK's list of suggestions.
void Accept(wxUIActionSimulator&, const wxFileDialog* dialog) {
    constexpr int Accept = -3;
    Respond(dialog, Accept);
}

void Dismiss(const wxDialog* dialog) {
    constexpr int Cancel = -6;
    Respond(dialog, Cancel);
}

}  // namespace quirkmeter::native

# Virtual displays. Sourced by the scripts that need one.

# open_display SIZE: starts a virtual display of that size with a window manager and sets DISPLAY.
# Adds its processes to the array "processes", which the caller ends.
open_display() {
    local display_number manager
    # Without -noreset the server resets when its first client leaves before the second connects.
    coproc Display { exec Xvfb -noreset -displayfd 1 -screen 0 "$1x24" 2>/dev/null; }
    processes+=($!)
    read -r -u "${Display[0]}" display_number
    export DISPLAY=:$display_number
    # Keep the file dialog's settings out of the user's.
    export GSETTINGS_BACKEND=memory
    start_window_manager
    for _ in {1..600}; do
        if xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; then return; fi
        kill -0 "$manager" 2>/dev/null || start_window_manager
        sleep 0.1
    done
    echo "the display has no window manager" >&2
    return 1
}

start_window_manager() {
    openbox >/dev/null 2>&1 &
    manager=$!
    processes+=($!)
}

# Functions for using the program as a person does, on a display without a screen. tools/tour and the tests in
# tests/round and tests/platforms source this file. It needs "set -euo pipefail" and these variables:
#
#     pictures   the folder for pictures and logs; it is there already
#     home       the program's home folder, with runtime/ in it
#     folder     the folder that the program is started in
#     build      the build folder with the program

# Seconds until a window has to be there, or gone.
readonly timeout=30
# More than a text cursor covers on the screen, less than any word.
readonly cursor_pixels=60

step_number=0
display_pid=
manager_pid=
program_pid=

fail() {
    echo "This ends here: $*" >&2
    if [[ -n ${DISPLAY-} ]]; then
        import -silent -window root "$pictures/failed.png" && echo "See $pictures/failed.png" >&2
    fi
    exit 1
}

# until_true <what is waited for> <command>...: tries the command until it succeeds; fails after the timeout.
until_true() {
    local -r what=$1 deadline=$((SECONDS + timeout))
    shift
    until "$@"; do
        [[ $SECONDS -lt $deadline ]] || fail "$what did not come within $timeout seconds"
        if [[ -n $program_pid ]] && has_ended "$program_pid"; then
            fail "the program has ended while waiting for $what"
        fi
        sleep 0.05
    done
}

has_ended() {
    ! kill -0 "$1" 2>/dev/null
}

# windows_titled <title>: the visible windows with exactly that title, one to a line.
windows_titled() {
    xdotool search --onlyvisible --name "^$1\$" 2>/dev/null || true
}

# Succeeds when there are as many visible windows with the title as wanted.
has_windows() {
    [[ $(windows_titled "$1" | wc -l) -eq $2 ]]
}

has_focus() {
    [[ $(xdotool getwindowfocus getwindowname 2>/dev/null) == "$1" ]]
}

# wait_for_window <title> [<how many with it>]: waits until it is there and has the keyboard.
wait_for_window() {
    until_true "the window \"$1\"" has_windows "$1" "${2:-1}"
    until_true "the keyboard for \"$1\"" has_focus "$1"
    wait_until_still
}

# wait_for_window_gone <title> [<how many stay>]
wait_for_window_gone() {
    until_true "the end of the window \"$1\"" has_windows "$1" "${2:-0}"
}

# Succeeds when two pictures of the screen, 0.15 s apart, are the same but for a blinking text cursor.
is_still() {
    local -r before=$pictures/before.miff after=$pictures/after.miff
    local different_pixels
    import -silent -window root "$before"
    sleep 0.15
    import -silent -window root "$after"
    different_pixels=$(compare -metric AE "$before" "$after" null: 2>&1) || true
    rm "$before" "$after"
    [[ $different_pixels -le $cursor_pixels ]]
}

wait_until_still() {
    until_true "a screen at rest" is_still
}

press() {
    xdotool key --clearmodifiers --delay 30 "$@"
}

write() {
    xdotool type --clearmodifiers --delay 30 "$1"
}

# picture <name> <what the step has shown>: takes a picture of the screen and prints where it is.
picture() {
    wait_until_still
    step_number=$((step_number + 1))
    local file
    file=$(printf '%02d-%s.png' "$step_number" "$1")
    import -silent -window root "$pictures/$file"
    printf '%2d. %s\n      %s\n' "$step_number" "$2" "${pictures#"$PWD/"}/$file"
}

start_display() {
    exec {display_number_pipe}< <(
        exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp 2>"$pictures/display.log"
    )
    display_pid=$!
    local number
    read -r -t "$timeout" number <&"$display_number_pipe" || fail "the display did not start"
    export DISPLAY=:$number
}

has_window_manager() {
    xdotool get_num_desktops >/dev/null 2>&1
}

start_window_manager() {
    mkdir -p "$home/.fluxbox"
    # No toolbar, no start-up file of the user's, no background picture.
    cat >"$home/.fluxbox/init" <<'EOF'
session.screen0.toolbar.visible: false
session.styleOverlay: ~/.fluxbox/overlay
EOF
    echo 'background: none' >"$home/.fluxbox/overlay"
    HOME=$home fluxbox -no-slit >"$pictures/window-manager.log" 2>&1 &
    manager_pid=$!
    until_true "the window manager" has_window_manager
    # A quiet background, so that the windows' edges are seen.
    HOME=$home fbsetroot -solid '#5f7688' 2>>"$pictures/window-manager.log"
}

# Replaces the shell with the program, in the program's folder. To be called in a subshell.
become_program() {
    local -r program=$(realpath "$build/brindlewake")
    cd "$folder"
    # The program must use nothing of the user's own desktop: no settings, no files, no services.
    export HOME=$home XDG_RUNTIME_DIR=$home/runtime QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8
    unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME XDG_STATE_HOME WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
    exec "$program" "$@"
}

# start_program [<option of the program>...]
start_program() {
    (become_program "$@") >"$pictures/program.log" 2>&1 &
    program_pid=$!
}

# start_program_again: starts the program beside the one that runs; the second start has to end by itself.
start_program_again() {
    (become_program) >"$pictures/second-start.log" 2>&1 || fail "the second start ended with status $?"
}

# click_row <row> <title of the main window> <times>: clicks the subject in a row of the list.
click_row() {
    local -r id=$(windows_titled "$2") first_row=87 row_height=21
    xdotool mousemove --window "$id" 560 $((first_row + row_height * ($1 - 1))) click --repeat "$3" --delay 60 1
}

# press_exit: presses Alt+X in the main window and waits until the program has ended.
press_exit() {
    press alt+x
    expect_end
}

# Waits until the program has ended by itself, with status 0.
expect_end() {
    local -r ending=$program_pid
    program_pid=
    until_true "the program's end" has_ended "$ending"
    wait "$ending" || fail "the program ended with status $?"
}

# Ends the program, the window manager and the display. To be called from a trap on EXIT.
end_desktop() {
    end_process "$program_pid" TERM
    # A window manager that has just lost a window may ignore SIGTERM.
    end_process "$manager_pid" KILL
    end_process "$display_pid" TERM
}

# end_process <process id, or nothing> <signal>: sends the signal and waits for the end.
end_process() {
    [[ -n $1 ]] || return 0
    kill -s "$2" "$1" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
}

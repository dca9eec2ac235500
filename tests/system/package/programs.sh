# How the programs of a Debian that stands in the folder $root are run on this machine's screen, by somebody who
# is not root. Sourced by live, which has fail(), $root, $work and $manual.

person=65534 # nobody
home=/tmp/home
mounted=no

# prepare_programs: makes the Debian fit to run programs in, as far as this machine permits.
prepare_programs() {
  mkdir -p "$root$home/Documents" "$root$home/runtime" "$root/tmp/scene"
  cp "$XAUTHORITY" "$root/tmp/xauthority"
  chown -R "$person:$person" "$root$home" "$root/tmp/scene" "$root/tmp/xauthority"
  chmod 700 "$root$home/runtime"
  if mount -t proc proc "$root/proc" 2>/dev/null; then
    # Terminals of its own, so that the simulated ports are none of this machine's.
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$root/dev/pts"
    mount --bind "$root/dev/pts/ptmx" "$root/dev/ptmx"
    mount -t sysfs -o ro sysfs "$root/sys"
    mounted=yes
  else
    echo "Nothing can be mounted here; the programs run with the libraries of the new Debian, but outside of it."
  fi
}

# run_program NAME ARGUMENT...; paths in the arguments are those inside the Debian.
run_program() {
  local name=$1
  shift
  local common=(LC_ALL=C.UTF-8 PATH=/usr/bin:/bin DISPLAY="$DISPLAY")
  if [ "$mounted" = yes ]; then
    chroot --userspec="$person:$person" "$root" env -i "${common[@]}" HOME="$home" XDG_RUNTIME_DIR="$home/runtime" \
      XAUTHORITY=/tmp/xauthority "$name" "$@"
    return
  fi
  local libraries=$root/usr/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
  (cd "$root" && setpriv --reuid "$person" --regid "$person" --clear-groups env -i "${common[@]}" \
    HOME="$root$home" XDG_RUNTIME_DIR="$root$home/runtime" XAUTHORITY="$root/tmp/xauthority" \
    QT_PLUGIN_PATH="$libraries/qt5/plugins" XKB_CONFIG_ROOT="$root/usr/share/X11/xkb" \
    FONTCONFIG_SYSROOT="$root" "$libraries"/ld-linux-*.so.2 --library-path "$libraries" \
    "$root/usr/bin/$name" "${@/#\/tmp/"$root/tmp"}")
}

window() { timeout 30 xdotool search --sync --onlyvisible --name "$1" | tail -1; }
press() { timeout 30 xdotool windowactivate --sync "$1" key "$2"; }

# Opens the window, reads the manual by F1 and closes the window by its frame.
use_window() {
  local frames program main help
  # A window that is shown while the window manager starts may never be: the program is the faster one.
  openbox --startup "touch $work/framing" >"$work/frames" 2>&1 &
  frames=$!
  timeout 30 sh -c 'until [ -e "$1" ]; do sleep 0.1; done' sh "$work/framing" || fail "openbox does not start."
  run_program VYR -diag >"$work/window" 2>&1 &
  program=$!
  main=$(window '^VYR') || fail "VYR shows no window: $(cat "$work/window")"
  if [ "$mounted" = yes ]; then # else the program cannot tell where it is installed
    press "$main" F1
    help=$(window "^$(sed -n 's/^# //p;q' "$manual/main-window.md") - VYR Help") ||
      fail "F1 does not open the installed manual."
    press "$help" Escape
  fi
  press "$main" alt+F4
  wait "$program" || fail "VYR did not end well: $(cat "$work/window")"
  kill "$frames"
  grep -q 'Program started' "$root$home/Documents/Tarnwick/VYR/VYR_Log.txt" || fail "VYR has left no log."
  [ -s "$root$home/.config/Tarnwick/VYR.conf" ] || fail "VYR has kept no settings."
}

# The demo's own tour; it ends well only when the simulated device did all that was asked.
play_scene() {
  run_program vyr-demo --scene /tmp/scene >"$work/scene" 2>&1 || fail "The demo: $(cat "$work/scene")"
  local pictures=("$root"/tmp/scene/*.png)
  [ ${#pictures[@]} -eq 10 ] || fail "The demo left ${#pictures[@]} pictures."
}

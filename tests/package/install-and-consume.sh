#!/usr/bin/env bash
# Meridex as its users get it.
#   static: the library built static and installed into a temporary prefix; examples/embed is built
#           against it with find_package and with pkg-config --static.
#   deb:    `make package` (scripts/package, dpkg-buildpackage) into PACKAGE_DIR, lintian on every package
#           (no error, no warning), then, in a private mount namespace whose /usr, /etc and /var are
#           throw-away overlays, the packages installed with apt exactly as a user installs them:
#           programs, man pages, headers, find_package, pkg-config, Python and the desk are used from
#           the system folders; then the dialog packages are removed and find_package(meridex) must
#           still work. The host's own system is never changed. Without the right to make a mount
#           namespace (not root), that part is skipped (exit 77) after the rest has passed.
#   install-and-consume.sh SOURCE_DIR PACKAGE_DIR [static|deb ...]
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
fail() { echo "install-and-consume: $*" >&2; exit 1; }

# Compiles every installed header on its own: nothing it needs is missing, no internal header is
# installed, none names a third-party or operating-system header. check_headers INCLUDE_ROOT
check_headers() {
  local root=$1 inc=$1/meridex header rel qt
  [ -f "$inc/meridex.h" ] && [ -f "$inc/Version.h" ] && [ -f "$inc/Export.h" ] || fail "umbrella, version or export header not installed"
  for internal in frame/XmlImpl.h frame/XmlAccess.h frame/Utf8.h addressbook/SiteKeyIndex.h settings/KeyedElements.h platform/StartedProgram.h; do
    [ ! -e "$inc/$internal" ] || fail "internal header installed: $internal"
  done
  [ ! -e "$inc/platform/linux" ] || fail "platform internals installed"
  if grep -rnE '#include *[<"](libxml/|libserialport|unistd\.h|sys/|fcntl\.h|windows\.h|termios\.h)' "$inc"; then
    fail "an installed header includes a third-party or operating-system header"
  fi
  while IFS= read -r header; do
    rel=${header#"$root/"}
    # The dialogs' headers need Qt's, as a consumer of meridex::ui gets them from Qt6::Widgets.
    qt=()
    case "$rel" in meridex/ui/*) read -ra qt <<<"-fPIC $(pkg-config --cflags Qt6Widgets)" ;; esac
    printf '#include <%s>\n' "$rel" | c++ -std=c++20 -fsyntax-only -I"$root" "${qt[@]}" -x c++ - \
      || fail "$rel does not compile on its own"
  done < <(find "$inc" -name '*.h' | sort)
}

# examples/embed built with find_package (PREFIX empty: the system's) and with pkg-config, and run.
# consume NAME PREFIX [--static]
consume() {
  local name=$1 prefix=$2 static=${3:-} out flags
  cmake -S "$src/examples/embed" -B "$work/embed-$name" -G Ninja ${prefix:+-DCMAKE_PREFIX_PATH="$prefix"} >"$work/embed-$name.log" \
    || { cat "$work/embed-$name.log"; fail "examples/embed does not configure ($name)"; }
  cmake --build "$work/embed-$name" >>"$work/embed-$name.log" || { cat "$work/embed-$name.log"; fail "examples/embed does not build ($name)"; }
  out=$("$work/embed-$name/embed" "$src/examples/demo/settings/V4Settings.xml" "$work/book-$name.xml") \
    || { echo "$out"; fail "examples/embed failed ($name)"; }
  grep -q 'site Hill Creek' <<<"$out" || fail "examples/embed did not find its site ($name)"
  flags=$(PKG_CONFIG_PATH="${prefix:+$prefix/lib/pkgconfig}" pkg-config $static --cflags --libs meridex) || fail "pkg-config cannot use meridex.pc ($name)"
  # shellcheck disable=SC2086
  c++ -std=c++20 "$src/examples/embed/main.cpp" -o "$work/embed-pc-$name" $flags || fail "examples/embed does not build with pkg-config ($name)"
  "$work/embed-pc-$name" "$src/examples/demo/settings/V4Settings.xml" "$work/book-pc-$name.xml" >/dev/null \
    || fail "the pkg-config build of examples/embed failed ($name)"
}

# Inside the private mount namespace: install the packages with apt and use them.
if [ "${1:-}" = --installed ]; then
  src=$2 debs=$3 work=$4
  export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data"
  for dir in usr etc var; do
    mkdir -p "$work/overlay/$dir/upper" "$work/overlay/$dir/work"
    mount -t overlay overlay -o "lowerdir=/$dir,upperdir=$work/overlay/$dir/upper,workdir=$work/overlay/$dir/work" "/$dir"
  done
  echo "== deb: apt install ./*.deb"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$debs"/*.deb >"$work/apt.log" 2>&1 \
    || { cat "$work/apt.log"; fail "apt could not install the packages"; }
  for program in meridex SerialPortInfoDump LoggerSimulator meridex-dialogs meridex-desk; do
    [ "$(command -v "$program")" = "/usr/bin/$program" ] || fail "$program is not installed in /usr/bin"
    [ -f "/usr/share/man/man1/$program.1.gz" ] || fail "$program has no compressed man page"
  done
  grep -q . <<<"$(meridex --version)" || fail "the installed tool does not run"
  [ -f /usr/share/bash-completion/completions/meridex ] || fail "the bash completion is not installed"
  check_headers /usr/include
  consume installed ""
  grep -q 'dialogs: TRUE' "$work/embed-installed.log" || fail "find_package(meridex OPTIONAL_COMPONENTS ui) did not find the dialogs"
  multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
  libdir=/usr/lib/$multiarch
  # Where the loader finds a system library (/lib is /usr/lib on a merged system).
  from_system() { grep -qE "^\s*$2 => (/usr)?/lib/$multiarch/$2 " <<<"$(ldd "$1")"; }
  from_system "$work/embed-installed/embed" libmeridex.so.0 || fail "examples/embed is not linked to the system's libmeridex.so.0"
  leaked=$(nm -DC --defined-only "$libdir/libmeridex.so.0" | grep -vcE ' (meridex::|(typeinfo|typeinfo name|vtable|VTT) for meridex::)' || true)
  [ "$leaked" -eq 0 ] || fail "libmeridex.so.0 exports $leaked symbols outside the meridex namespace"
  (cd "$work" && /usr/bin/python3 -c 'import meridex; meridex.Settings()') || fail "the installed Python module does not import"
  # The desk: shared libraries, no display needed for --help/--version, the demo found from the prefix.
  from_system /usr/bin/meridex-desk libmeridex_ui.so.0 || fail "the installed desk does not use libmeridex_ui.so.0"
  from_system /usr/bin/meridex-desk libmeridex.so.0 || fail "the installed desk does not use libmeridex.so.0"
  for option in --help --version; do
    env -u DISPLAY -u WAYLAND_DISPLAY meridex-desk "$option" >/dev/null || fail "meridex-desk $option fails without a display"
  done
  QT_QPA_PLATFORM=offscreen meridex-desk --workspace "$work/workspace" --prepare >/dev/null || fail "meridex-desk could not make a workspace"
  [ -s "$work/workspace/AddressBook.xml" ] && [ -s "$work/workspace/settings/V4Settings.xml" ] \
    || fail "the new workspace was not made from the installed demo"
  [ -f /usr/share/applications/org.meridex_project.Desk.desktop ] && [ -f /usr/share/metainfo/org.meridex_project.Desk.metainfo.xml ] \
    && [ -f /usr/share/icons/hicolor/scalable/apps/org.meridex_project.Desk.svg ] || fail "the desk's desktop files are not installed"

  echo "== deb: without the dialogs"
  DEBIAN_FRONTEND=noninteractive apt-get remove -y -qq libmeridex-ui-dev meridex-ui libmeridex-ui0 >>"$work/apt.log" 2>&1 \
    || { cat "$work/apt.log"; fail "apt could not remove the dialog packages"; }
  [ ! -e /usr/include/meridex/ui ] || fail "the dialogs' headers stay behind"
  rm -rf "$work/embed-installed"
  consume installed ""
  grep -q 'dialogs: FALSE' "$work/embed-installed.log" || fail "find_package(meridex OPTIONAL_COMPONENTS ui) found dialogs that are gone"
  exit 0
fi

src=$(cd "$1" && pwd); debs=$2; shift 2
kinds=("$@"); [ ${#kinds[@]} -gt 0 ] || kinds=(static deb)
work=$(mktemp -d "${TMPDIR:-/tmp}/meridex-consume-XXXXXX")
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config"   # the example never touches the real user's files
result=0

for kind in "${kinds[@]}"; do
  case $kind in
  static)
    echo "== static: the library, built and installed as a user would"
    prefix="$work/prefix-static"
    cmake -S "$src" -B "$work/build-static" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF \
      -DMERIDEX_BUILD_TESTS=OFF -DMERIDEX_BUILD_BENCH=OFF -DMERIDEX_BUILD_TOOLS=OFF -DMERIDEX_BUILD_UI=OFF \
      -DMERIDEX_BUILD_PYTHON=OFF -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib >"$work/static.log" \
      || { cat "$work/static.log"; fail "configure (static) failed"; }
    cmake --build "$work/build-static" -j "$(nproc)" >>"$work/static.log" && cmake --install "$work/build-static" >>"$work/static.log" \
      || { tail -50 "$work/static.log"; fail "build or install (static) failed"; }
    check_headers "$prefix/include"
    consume static "$prefix" --static
    ;;
  deb)
    echo "== deb: make package"
    start=$SECONDS
    "$src/scripts/package" "$debs" >/dev/null || fail "make package failed"
    echo "   built in $((SECONDS - start)) s"
    version=$(sed -n 's/^project(meridex VERSION \([0-9.]*\).*/\1/p' "$src/CMakeLists.txt")
    [ "$(dpkg-parsechangelog -l "$src/debian/changelog" -S Version)" = "$version" ] \
      || fail "debian/changelog is not at the project's version $version"
    arch=$(dpkg --print-architecture)
    for name in libmeridex0 libmeridex-dev libmeridex-ui0 libmeridex-ui-dev meridex meridex-ui python3-meridex; do
      [ -f "$debs/${name}_${version}_${arch}.deb" ] || fail "make package did not make ${name}_${version}_${arch}.deb"
    done
    for name in libmeridex0 libmeridex-ui0 meridex meridex-ui python3-meridex; do
      [ -f "$debs/${name}-dbgsym_${version}_${arch}.deb" ] || fail "no debug symbols package for $name"
    done
    ! grep -qi 'qt6' <<<"$(dpkg-deb -f "$debs/libmeridex0_${version}_${arch}.deb" Depends)" || fail "libmeridex0 depends on Qt"
    ! grep -q 'include/meridex/ui' <<<"$(dpkg-deb -c "$debs/libmeridex-dev_${version}_${arch}.deb")" || fail "libmeridex-dev holds the dialogs' headers"
    contents=$(dpkg-deb -c "$debs/python3-meridex_${version}_${arch}.deb")
    grep -q './usr/lib/python3/dist-packages/meridex/__init__\..*\.so$' <<<"$contents" || fail "python3-meridex has no module"
    grep -q './usr/lib/python3/dist-packages/meridex/py.typed$' <<<"$contents" || fail "python3-meridex has no py.typed"
    grep -q './usr/lib/python3/dist-packages/meridex/__init__.pyi$' <<<"$contents" || fail "python3-meridex has no type stubs"
    # lintian: not one error or warning, on any package (overrides in debian/*.lintian-overrides say why).
    start=$SECONDS
    lintian --fail-on error,warning "$debs"/*.deb >"$work/lintian.log" 2>&1 \
      || { cat "$work/lintian.log"; fail "lintian found errors or warnings"; }
    echo "   lintian in $((SECONDS - start)) s: no error or warning"
    if [ "$(id -u)" -eq 0 ] && unshare -m true 2>/dev/null; then
      start=$SECONDS
      unshare -m --propagation private "$0" --installed "$src" "$debs" "$work" || fail "the installed packages failed"
      echo "   installed, used and removed in $((SECONDS - start)) s"
    else
      echo "install-and-consume: no private mount namespace here (not root): the packages were not installed" >&2
      result=77
    fi
    ;;
  *) fail "unknown kind $kind" ;;
  esac
done
echo "install-and-consume: ${kinds[*]} passed"
exit $result

#!/usr/bin/env bash
# Builds Meridex as a user would (static, then shared), installs it into a temporary
# prefix, and builds and runs examples/embed against the installed tree with
# find_package, then with pkg-config. The shared build is the Debian one: installed
# under /usr into a staging folder (DESTDIR), and packed with cpack, whose packages
# are checked for their contents and dependencies. Fails when an install rule is missing, when an
# installed header names an internal or third-party header, or when a header does
# not compile on its own.
#   install-and-consume.sh SOURCE_DIR [static|shared ...]
set -euo pipefail
src=$(cd "$1" && pwd); shift
kinds=("$@"); [ ${#kinds[@]} -gt 0 ] || kinds=(static shared)
work=$(mktemp -d "${TMPDIR:-/tmp}/meridex-consume-XXXXXX")
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME="$work/config"   # the example never touches the real user's files

fail() { echo "install-and-consume: $*" >&2; exit 1; }

for kind in "${kinds[@]}"; do
  shared=OFF; [ "$kind" = shared ] && shared=ON
  build="$work/build-$kind"
  if [ "$kind" = shared ]; then
    install_prefix=/usr; stage="$work/stage"; prefix="$stage/usr"
  else
    install_prefix="$work/prefix-$kind"; stage=""; prefix="$install_prefix"
  fi
  echo "== $kind: build and install"
  cmake -S "$src" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=$shared \
    -DMERIDEX_BUILD_TESTS=OFF -DMERIDEX_BUILD_BENCH=OFF -DCMAKE_INSTALL_PREFIX="$install_prefix" >"$work/$kind-configure.log" \
    || { cat "$work/$kind-configure.log"; fail "configure ($kind) failed"; }
  cmake --build "$build" -j "$(nproc)" >"$work/$kind-build.log" || { tail -50 "$work/$kind-build.log"; fail "build ($kind) failed"; }
  DESTDIR="$stage" cmake --install "$build" >"$work/$kind-install.log" || { cat "$work/$kind-install.log"; fail "install ($kind) failed"; }
  libdir=$(dirname "$(find "$prefix" -name 'libmeridex.*' -print -quit)")
  export LD_LIBRARY_PATH="$libdir"

  inc="$prefix/include/meridex"
  [ -f "$inc/meridex.h" ] && [ -f "$inc/Version.h" ] && [ -f "$inc/Export.h" ] || fail "umbrella, version or export header not installed"
  for internal in frame/XmlImpl.h frame/XmlAccess.h frame/Utf8.h addressbook/SiteKeyIndex.h settings/KeyedElements.h platform/StartedProgram.h; do
    [ ! -e "$inc/$internal" ] || fail "internal header installed: $internal"
  done
  [ ! -e "$inc/platform/linux" ] || fail "platform internals installed"
  if grep -rnE '#include *[<"](libxml/|libserialport|unistd\.h|sys/|fcntl\.h|windows\.h|termios\.h)' "$inc"; then
    fail "an installed header includes a third-party or operating-system header"
  fi
  # Each installed header compiles on its own: nothing it needs is missing.
  while IFS= read -r header; do
    rel=${header#"$prefix/include/"}
    # The dialogs' headers need Qt's, as a consumer of meridex::ui gets them from Qt6::Widgets.
    qt=()
    case "$rel" in meridex/ui/*) read -ra qt <<<"-fPIC $(pkg-config --cflags Qt6Widgets)" ;; esac
    printf '#include <%s>\n' "$rel" | c++ -std=c++20 -fsyntax-only -I"$prefix/include" "${qt[@]}" -x c++ - \
      || fail "$rel does not compile on its own"
  done < <(find "$inc" -name '*.h' | sort)

  grep -q . <<<"$("$prefix/bin/meridex" --version)" || fail "the installed tool does not run"
  [ -x "$prefix/bin/SerialPortInfoDump" ] || fail "the companion is not installed"
  [ -f "$prefix/share/man/man1/meridex.1" ] || fail "the man page is not installed"
  [ -f "$prefix/share/bash-completion/completions/meridex" ] || fail "the bash completion is not installed"
  PYTHONPATH="$prefix/lib/python3/dist-packages" /usr/bin/python3 -c 'import meridex; meridex.Settings()' \
    || fail "the installed Python module does not import ($kind)"

  echo "== $kind: examples/embed with find_package"
  cmake -S "$src/examples/embed" -B "$work/embed-$kind" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >"$work/embed-$kind.log" \
    || { cat "$work/embed-$kind.log"; fail "examples/embed does not configure against the $kind install"; }
  cmake --build "$work/embed-$kind" >>"$work/embed-$kind.log" || { cat "$work/embed-$kind.log"; fail "examples/embed does not build ($kind)"; }
  if [ "$kind" = shared ]; then
    grep -q "$libdir/libmeridex.so.0" <<<"$(ldd "$work/embed-$kind/embed")" || { ldd "$work/embed-$kind/embed"; echo "libdir=$libdir"; fail "the example is not linked to the installed libmeridex.so.0"; }
    symbols=$(nm -D --defined-only "$libdir/libmeridex.so.0" | wc -l)
    leaked=$(nm -DC --defined-only "$libdir/libmeridex.so.0" | grep -vcE ' (meridex::|(typeinfo|typeinfo name|vtable|VTT) for meridex::)' || true)
    echo "libmeridex.so.0 exports $symbols symbols"
    [ "$leaked" -eq 0 ] || fail "libmeridex.so.0 exports $leaked symbols outside the meridex namespace"
  fi
  out=$("$work/embed-$kind/embed" "$src/examples/demo/settings/V4Settings.xml" "$work/book-$kind.xml") \
    || { echo "$out"; fail "examples/embed failed ($kind)"; }
  echo "$out"
  grep -q 'site Hill Creek' <<<"$out" || fail "examples/embed did not find its site"

  echo "== $kind: pkg-config"
  pcdir=$(dirname "$(find "$prefix" -name meridex.pc -print -quit)")
  [ -n "$pcdir" ] || fail "meridex.pc not installed"
  static=(); [ "$kind" = static ] && static=(--static)
  flags=$(PKG_CONFIG_PATH="$pcdir" PKG_CONFIG_SYSROOT_DIR="$stage" pkg-config "${static[@]}" --cflags --libs meridex) || fail "pkg-config cannot use meridex.pc"
  # shellcheck disable=SC2086
  c++ -std=c++20 "$src/examples/embed/main.cpp" -o "$work/embed-pc-$kind" $flags -Wl,-rpath,"$libdir" \
    || fail "examples/embed does not build with pkg-config ($kind)"
  "$work/embed-pc-$kind" "$src/examples/demo/settings/V4Settings.xml" "$work/book-$kind.xml" >/dev/null \
    || fail "the pkg-config build of examples/embed failed ($kind)"

  if [ "$kind" = shared ] && command -v dpkg-shlibdeps >/dev/null; then
    echo "== $kind: Debian packages"
    (cd "$build" && cpack -G DEB >"$work/cpack.log") || { cat "$work/cpack.log"; fail "cpack failed"; }
    version=$(sed -n 's/^#define MERIDEX_VERSION_STRING "\(.*\)"/\1/p' "$inc/Version.h")
    arch=$(dpkg --print-architecture)
    deb="$build/meridex_${version}_${arch}.deb"; dev="$build/meridex-dev_${version}_${arch}.deb"
    [ -f "$deb" ] && [ -f "$dev" ] || fail "cpack did not make meridex_${version}_${arch}.deb and meridex-dev_${version}_${arch}.deb"
    grep -q './usr/bin/meridex$' <<<"$(dpkg-deb -c "$deb")" || fail "the meridex package has no tool"
    grep -q 'libmeridex.so.0 ->' <<<"$(dpkg-deb -c "$deb")" || fail "the meridex package has no library"
    grep -q 'cmake/meridex/meridexConfig.cmake' <<<"$(dpkg-deb -c "$dev")" || fail "meridex-dev has no CMake package"
    grep -q 'include/meridex/meridex.h' <<<"$(dpkg-deb -c "$dev")" || fail "meridex-dev has no headers"
    grep -q 'libxml2' <<<"$(dpkg-deb -f "$deb" Depends)" || fail "the meridex package does not depend on libxml2"
    grep -qF "meridex (= $version)" <<<"$(dpkg-deb -f "$dev" Depends)" || fail "meridex-dev does not depend on meridex"
    ! grep -qi 'libqt' <<<"$(dpkg-deb -f "$deb" Depends)" || fail "the meridex package depends on Qt"
    if grep -q '^MERIDEX_BUILD_UI:BOOL=ON' "$build/CMakeCache.txt"; then
      ui="$build/meridex-ui_${version}_${arch}.deb"
      [ -f "$ui" ] || fail "cpack did not make meridex-ui_${version}_${arch}.deb"
      grep -q 'libmeridex_ui.so.0 ->' <<<"$(dpkg-deb -c "$ui")" || fail "meridex-ui has no library"
      grep -q './usr/bin/meridex-dialogs$' <<<"$(dpkg-deb -c "$ui")" || fail "meridex-ui has no meridex-dialogs"
      grep -q './usr/share/meridex/demo/settings/V4Settings.xml$' <<<"$(dpkg-deb -c "$ui")" \
        || fail "meridex-ui has no demo workspace for meridex-desk"
      grep -qF "meridex (= $version)" <<<"$(dpkg-deb -f "$ui" Depends)" || fail "meridex-ui does not depend on meridex"
    fi
    py="$build/python3-meridex_${version}_${arch}.deb"
    [ -f "$py" ] || fail "cpack did not make python3-meridex_${version}_${arch}.deb"
    contents=$(dpkg-deb -c "$py")
    grep -q './usr/lib/python3/dist-packages/meridex/__init__\..*\.so$' <<<"$contents" || fail "python3-meridex has no module"
    grep -q './usr/lib/python3/dist-packages/meridex/py.typed$' <<<"$contents" || fail "python3-meridex has no py.typed"
    grep -qF "meridex (= $version)" <<<"$(dpkg-deb -f "$py" Depends)" || fail "python3-meridex does not depend on meridex"
  fi
  unset LD_LIBRARY_PATH
done
echo "install-and-consume: ${kinds[*]} passed"

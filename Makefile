# The two commands: `make demo` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)

.PHONY: demo test coverage soak soak-shared screenshots windows test-windows bootstrap-windows bootstrap build-dev build-ci build-demo build-desk bench package docs fuzz clean

# With a display: Meridex Desk on a copy of the demo workspace (the demo build leaves the dialogs
# out, so the desk comes from the dev build). Without one (CI, a server): the command-line demo, then
# the pictures of every window.
demo: bootstrap
	@if [ -n "$${DISPLAY:-}$${WAYLAND_DISPLAY:-}" ]; then \
	  $(MAKE) --no-print-directory build-desk && scripts/desk-demo build/dev/apps/meridex-desk/meridex-desk; \
	else \
	  $(MAKE) --no-print-directory build-demo && scripts/demo build/demo/apps/meridex/meridex && \
	  $(MAKE) --no-print-directory screenshots SHOTS=build/demo/screenshots && \
	  echo "No display: the command-line demo ran instead of Meridex Desk; its windows are pictured in build/demo/screenshots/"; \
	fi

test: bootstrap build-ci
	ctest --preset ci -j $(JOBS)

# Line and branch coverage of src/, apps/ and tools/ over the whole suite (but the package and pip
# builds, which build the code again uninstrumented); HTML in build/coverage/html/index.html.
GCOVR = gcovr -r . --object-directory build/coverage -j $(JOBS) --exclude-throw-branches --exclude-unreachable-branches
coverage:
	scripts/bootstrap coverage
	cmake --preset coverage
	cmake --build --preset coverage -j $(JOBS)
	find build/coverage -name '*.gcda' -delete
	ctest --preset coverage -j $(JOBS)
	mkdir -p build/coverage/html
	$(GCOVR) --filter 'src/' --filter 'apps/' --filter 'tools/' --html-details build/coverage/html/index.html --print-summary
	@echo "src/ alone (its table in build/coverage/src.txt; gcovr replaces the file it writes, so never name a device):"
	@$(GCOVR) --filter 'src/' --print-summary -o build/coverage/src.txt

# The long runs: the shared-file soak below, then the monkey on every dialog for SOAK_ACTIONS random
# actions (MERIDEX_MONKEY_SEED replays a run).
SOAK_ACTIONS ?= 100000
soak: soak-shared
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target test_ui_monkey
	MERIDEX_MONKEY_ACTIONS=$(SOAK_ACTIONS) build/dev/tests/ui/test_ui_monkey

# SOAK_K processes (tool and library) each making SOAK_M changes to one shared book, map and
# settings file, then the same with random kills: every saved change must be found.
SOAK_K ?= 8
SOAK_M ?= 500
soak-shared: bootstrap
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target shared_soak meridex_cli
	build/dev/tests/crash/shared_soak build/dev/apps/meridex/meridex $(SOAK_K) $(SOAK_M)
	build/dev/tests/crash/shared_soak build/dev/apps/meridex/meridex $(SOAK_K) $(SOAK_M) --kill

bench: bootstrap build-dev
	scripts/bench build/dev

# Every dialog of the library rendered offscreen to $(SHOTS)/NAME.png.
SHOTS ?= docs/screenshots
screenshots: bootstrap
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target meridex-screenshots
	mkdir -p $(SHOTS)
	build/dev/tests/ui/meridex-screenshots $(SHOTS)

# Each libFuzzer target for FUZZ_SECONDS (default 60); see scripts/fuzz.
fuzz: bootstrap
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	scripts/fuzz

# Debian packages in build/package (dpkg-buildpackage with debian/ on a copy of the tree): libmeridex0,
# libmeridex-dev, libmeridex-ui0, libmeridex-ui-dev, meridex, meridex-ui, python3-meridex and their -dbgsym.
package: bootstrap
	JOBS=$(JOBS) scripts/package build/package

# The API reference of the installed headers, in build/docs/html; fails on any Doxygen warning.
docs: bootstrap
	cmake --preset docs
	cmake --build --preset docs

bootstrap:
	scripts/bootstrap

# Windows executables (MinGW-w64) in build/windows; the dependencies without a Debian
# MinGW package are built once from their Debian sources into build/windows-deps.
windows: bootstrap-windows
	JOBS=$(JOBS) scripts/windows-deps
	cmake --preset windows
	cmake --build --preset windows -j $(JOBS)

# The Windows build's tests under wine64, in a fresh, seeded Wine prefix.
test-windows: windows
	JOBS=$(JOBS) scripts/test-windows

bootstrap-windows:
	scripts/bootstrap windows

build-dev:
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS)

build-ci:
	cmake --preset ci
	cmake --build --preset ci -j $(JOBS)

build-demo:
	cmake --preset demo
	cmake --build --preset demo -j $(JOBS)

build-desk:
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target meridex_desk_app

clean:
	rm -rf build

# The two commands: `make demo` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)

.PHONY: demo test screenshots bootstrap build-dev build-ci bench clean

demo: bootstrap build-dev
	scripts/demo build/dev/apps/meridex/meridex

test: bootstrap build-ci
	ctest --preset ci -j $(JOBS)

bench: bootstrap build-dev
	scripts/bench build/dev

# Every dialog of the library rendered offscreen to docs/screenshots/NAME.png.
screenshots: bootstrap
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS) --target meridex-screenshots
	build/dev/tests/ui/meridex-screenshots docs/screenshots

bootstrap:
	scripts/bootstrap

build-dev:
	cmake --preset dev
	cmake --build --preset dev -j $(JOBS)

build-ci:
	cmake --preset ci
	cmake --build --preset ci -j $(JOBS)

clean:
	rm -rf build

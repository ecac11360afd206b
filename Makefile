# The two commands: `make demo` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)

.PHONY: demo test docs bootstrap build-dev build-ci bench clean

demo: bootstrap build-dev
	scripts/demo build/dev/apps/meridex/meridex

test: bootstrap build-ci
	ctest --preset ci -j $(JOBS)

bench: bootstrap build-dev
	scripts/bench build/dev

# The API reference of the installed headers, in build/docs/html; fails on any Doxygen warning.
docs: bootstrap
	cmake --preset docs
	cmake --build --preset docs

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

# The two commands: `make demo` and `make test`. Both install what they need first.
JOBS ?= $(shell nproc)

.PHONY: demo test bootstrap build-dev build-ci bench fuzz clean

demo: bootstrap build-dev
	scripts/demo build/dev/apps/meridex/meridex

test: bootstrap build-ci
	ctest --preset ci -j $(JOBS)

bench: bootstrap build-dev
	scripts/bench build/dev

# Each libFuzzer target for FUZZ_SECONDS (default 60); see scripts/fuzz.
fuzz: bootstrap
	cmake --preset fuzz
	cmake --build --preset fuzz -j $(JOBS)
	scripts/fuzz

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

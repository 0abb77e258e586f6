# Front door. `make run` and `make test` set up a fresh Debian 12 machine by themselves.
SHELL := /bin/bash
JOBS ?= $(shell nproc)
SESSION := scripts/test-session.sh

.PHONY: all setup build run test asan tsan bench format clean

all: build

setup:
	@bash scripts/setup.sh

build/%/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset $* >/dev/null

build: setup build/debug/build.ninja
	cmake --build --preset debug -j $(JOBS)

# Until the tray app exists, `make run` shows the current usage once (ARGS="..." runs any subcommand).
run: build
	@build/debug/app/gaugewell $(or $(ARGS),status)

test: build
	$(SESSION) ctest --preset debug -j $(JOBS)

asan: setup build/asan/build.ninja
	cmake --build --preset asan -j $(JOBS)
	$(SESSION) ctest --preset asan -j $(JOBS)

tsan: setup build/tsan/build.ninja
	cmake --build --preset tsan -j $(JOBS)
	$(SESSION) ctest --preset tsan -j $(JOBS)

bench: setup build/release/build.ninja
	cmake --build --preset release -j $(JOBS)
	@for b in build/release/bench/*Benchmarks; do echo "== $$b"; $(SESSION) $$b; done

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build

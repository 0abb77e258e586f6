# Front door. `make run` and `make test` set up a fresh Debian 12 machine by themselves.
SHELL := /bin/bash
JOBS ?= $(shell nproc)
SESSION := scripts/test-session.sh

.PHONY: all setup build run test asan tsan bench package translations format clean

all: build

setup:
	@bash scripts/setup.sh

build/%/build.ninja: CMakeLists.txt CMakePresets.json
	cmake --preset $* >/dev/null

build: setup build/debug/build.ninja
	cmake --build --preset debug -j $(JOBS)

# The tray application when there is a display; otherwise the current usage once, and how to get the
# tray. ARGS="..." runs any subcommand instead.
run: build
	@if [ -n "$(ARGS)" ]; then build/debug/app/gaugewell $(ARGS); \
	elif [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then build/debug/app/gaugewell; \
	else build/debug/app/gaugewell status; \
	  echo; echo "No display here (DISPLAY and WAYLAND_DISPLAY are unset): this was 'gaugewell status'."; \
	  echo "In a desktop session, 'make run' (or build/debug/app/gaugewell) starts the tray application."; fi

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

# The .deb, then a check that it installs and runs (scripts/check-package.sh).
package: setup build/package/build.ninja
	cmake --build --preset package -j $(JOBS)
	cd build/package && cpack -G DEB >/dev/null && ls gaugewell_*.deb
	scripts/check-package.sh

# Refreshes translations/gaugewell_*.ts from the texts in the code (then translate the new ones).
translations:
	@for ts in translations/gaugewell_*.ts; do /usr/lib/qt6/bin/lupdate -no-obsolete -locations none \
	  UsageDomain Platform ProviderKit CodexProvider ClaudeProvider UsageCoordinator UsagePresentation GaugewellUI app \
	  -ts $$ts; done

format:
	@git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build

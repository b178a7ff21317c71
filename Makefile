# Quick start: `make run` and `make test`. Both install what is missing first.
JOBS    ?= $(shell nproc 2>/dev/null || echo 2)
PRESET  ?= default
BUILD   := build/$(PRESET)
WERROR  := $(if $(filter true 1 yes,$(CI)),ON,OFF)
FUZZ_SECONDS ?= 60
MAKEFLAGS += --no-print-directory

.PHONY: all deps configure build run test test-slow test-asan bench package package-check fuzz fuzz-run format format-check clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake --preset $(PRESET) -DCUEBRIDGE_WERROR=$(WERROR) >/dev/null

build: configure
	@cmake --build --preset $(PRESET) -j $(JOBS)

# The window on the example (its marker list as the document, a copy of its project as
# the target) when there is a display; without one the same import, headless.
run: build
	@out=$$(mktemp -d) && cp examples/review-cut.xml "$$out/" && \
	if [ -n "$${DISPLAY:-}$${WAYLAND_DISPLAY:-}" ]; then \
	  $(BUILD)/src/app/Cuebridge --target "$$out/review-cut.xml" examples/review-notes.txt; \
	else \
	  echo "No display: importing the example with cuebridge-import instead of the window."; \
	  $(BUILD)/src/cli/cuebridge-import examples/review-notes.txt "$$out/review-cut.xml"; \
	fi

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS) -LE slow

# Tests whose outcome depends on the wall clock: CI runs them as a step of their own.
test-slow: build
	@cd $(BUILD) && ctest --output-on-failure -L slow

test-asan:
	@$(MAKE) --no-print-directory test PRESET=asan

# Every benchmark, then bench/RESULTS.md from their figures.
bench: build
	@$(BUILD)/bench/cuebridge-bench --benchmark_counters_tabular=true \
	  --benchmark_out=$(BUILD)/bench/micro.json --benchmark_out_format=json
	@bench/import-bench $(BUILD) $(BUILD)/bench/imports.tsv
	@# The window under a real X server, as an editor sees it.
	@QT_QPA_PLATFORM=xcb xvfb-run -a $(BUILD)/bench/cuebridge-window-bench $(BUILD)/bench/window.tsv
	@bench/write-results $(BUILD)/bench/micro.json $(BUILD)/bench/imports.tsv \
	  $(BUILD)/bench/window.tsv > bench/RESULTS.md
	@echo "figures written to bench/RESULTS.md"

# The Debian package of a release build, in build/release.
package: deps
	@cmake --preset release -DCUEBRIDGE_WERROR=$(WERROR) >/dev/null
	@cmake --build --preset release -j $(JOBS)
	@cd build/release && cpack -G DEB | grep -v '^CPack: - '

# Its files, its dependencies, the validators of the desktop; as root it is also
# installed and removed again.
package-check: package
	@scripts/check-package "$$(ls -t build/release/cuebridge_*.deb | head -1)"

fuzz:
	@scripts/install-deps --fuzz
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS)
	@echo "fuzz targets in build/fuzz/fuzz; run them with 'make fuzz-run FUZZ_SECONDS=N'"

fuzz-run: fuzz
	@scripts/run-fuzzers $(FUZZ_SECONDS)

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

format-check:
	@git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror

clean:
	@rm -rf build

# make demo        builds everything and runs zbctl on the bundled example
# make demo-serve  starts zbctl serve on the bundled example and plays a short tuning session
#                  against it over TCP, printing the exchange
# make test        builds everything and runs every test through CTest
# make bench       builds RelWithDebInfo and runs the benchmarks (never part of make test)
# SANITIZE=address,undefined or SANITIZE=thread builds into a directory of its own.
# make test-aarch64  cross-builds for 64-bit ARM into build-aarch64/, runs CTest under qemu-aarch64
#                    and builds a C consumer against the installed arm64 tree
# make test-soong    builds libzbhalcontroller.so from Android.bp with mini-soong into build-soong/
#                    and runs the end-to-end tests against it
# make test-install  installs build/ into a scratch prefix and builds a C consumer against it
# make test-asan   the whole test suite under AddressSanitizer and UndefinedBehaviorSanitizer,
#                  built with clang into the fuzz targets' build directory
# make test-tsan   the threaded tests only (THREADED_TESTS) under ThreadSanitizer
# make fuzz        builds the libFuzzer targets (clang) and runs each for SECONDS seconds
# make coverage    builds with --coverage into build-coverage/, runs every test there, and writes
#                  line and branch coverage of src/ per file and per folder, text and HTML, in
#                  build-coverage/ (scripts/coverage); fails when a target is missed
# make soak        runs the stress workload for MINUTES minutes (10), checking memory, call times
#                  and the DSP state (never part of make test)
SANITIZE ?=
BUILD_TYPE ?= RelWithDebInfo
comma := ,
BUILD_DIR ?= build$(if $(SANITIZE),-$(subst $(comma),-,$(SANITIZE)))
JOBS ?= $(shell nproc)
SECONDS ?= 60
MINUTES ?= 10
# Where the soak's stderr, the library's log lines (gigabytes in a long run), goes.
SOAK_LOG ?= /dev/null
FUZZ_DIR ?= build-fuzz
# Test binaries whose cases start threads, below build-thread/tests/.
THREADED_TESTS ?= test_log stress/test_stress
# Cases of those binaries to run under ThreadSanitizer.
TSAN_GTEST_FILTER ?= *

.PHONY: all bootstrap configure build test demo demo-serve clean test-aarch64 test-soong \
        test-install test-asan test-tsan configure-fuzz fuzz-build fuzz bench coverage soak

all: build

bootstrap:
	@scripts/bootstrap

configure: bootstrap
	@cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DZB_SANITIZE=$(SANITIZE) >/dev/null

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	@cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

BENCH_ARGS ?= --benchmark_repetitions=5 --benchmark_report_aggregates_only=true
bench: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target zb_bench zb_callgrind
	@$(BUILD_DIR)/bench/zb_bench $(BENCH_ARGS)

soak: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS) --target soak
	@$(BUILD_DIR)/tests/stress/soak $(MINUTES) 2>$(SOAK_LOG)

demo: build
	@$(BUILD_DIR)/tools/zbctl/zbctl run

demo-serve: build
	@scripts/demo-serve $(BUILD_DIR)

# A test that hangs fails after this many seconds instead of stalling the run.
TEST_TIMEOUT ?= 300
AARCH64_DIR ?= build-aarch64

test-aarch64:
	@scripts/bootstrap aarch64
	@fresh=$$([ -f $(AARCH64_DIR)/CMakeCache.txt ] || echo 1); \
	  cmake -S . -B $(AARCH64_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	    -DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake >/dev/null || \
	  { [ -z "$$fresh" ] || rm -rf $(AARCH64_DIR); exit 1; }
	@cmake --build $(AARCH64_DIR) -j $(JOBS)
	@cd $(AARCH64_DIR) && ctest --output-on-failure -j $(JOBS) --timeout $(TEST_TIMEOUT)
	@scripts/test-install $(AARCH64_DIR)

test-soong: bootstrap
	@TEST_TIMEOUT=$(TEST_TIMEOUT) scripts/test-soong

test-install: build
	@scripts/test-install $(BUILD_DIR)

# One clang build serves both: the whole test suite under AddressSanitizer and
# UndefinedBehaviorSanitizer, and the fuzz targets (all code carries libFuzzer's coverage).
configure-fuzz: bootstrap
	@CC=clang-14 CXX=clang++-14 cmake -S . -B $(FUZZ_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) \
	  -DZB_FUZZ=ON -DZB_SANITIZE=address,undefined >/dev/null

test-asan: configure-fuzz
	@cmake --build $(FUZZ_DIR) -j $(JOBS)
	@cd $(FUZZ_DIR) && ctest --output-on-failure -j $(JOBS) --timeout $(TEST_TIMEOUT)

# Builds only the threaded test binaries and what they load, and runs them directly: CTest
# would want every test binary of the tree.
test-tsan: bootstrap
	@cmake -S . -B build-thread -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DZB_SANITIZE=thread >/dev/null
	@cmake --build build-thread -j $(JOBS) --target $(notdir $(THREADED_TESTS))
	@for test in $(THREADED_TESTS); do \
	  echo "== $$test (thread sanitizer)"; \
	  TSAN_OPTIONS="halt_on_error=1 suppressions=$(CURDIR)/tests/stress/tsan.supp" build-thread/tests/$$test --gtest_brief=1 \
	    --gtest_filter=$(TSAN_GTEST_FILTER) || exit 1; \
	done

fuzz-build: configure-fuzz
	@cmake --build $(FUZZ_DIR) -j $(JOBS) --target fuzzers

fuzz: fuzz-build
	@scripts/fuzz $(FUZZ_DIR) $(SECONDS)

COVERAGE_DIR ?= build-coverage
coverage:
	@scripts/bootstrap gcovr
	@cmake -S . -B $(COVERAGE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZB_COVERAGE=ON >/dev/null
	@cmake --build $(COVERAGE_DIR) -j $(JOBS)
	@find $(COVERAGE_DIR) -name '*.gcda' -delete
	@cd $(COVERAGE_DIR) && ctest --output-on-failure -j $(JOBS) --timeout $(TEST_TIMEOUT)
	@scripts/coverage $(COVERAGE_DIR)

clean:
	rm -rf build build-*

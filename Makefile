# make demo   builds everything and runs zbctl on the bundled example
# make test   builds everything and runs every test through CTest
# make bench  builds RelWithDebInfo and runs the benchmarks (never part of make test)
# SANITIZE=address,undefined or SANITIZE=thread builds into a directory of its own.
SANITIZE ?=
BUILD_TYPE ?= RelWithDebInfo
comma := ,
BUILD_DIR ?= build$(if $(SANITIZE),-$(subst $(comma),-,$(SANITIZE)))
JOBS ?= $(shell nproc)

.PHONY: all bootstrap configure build test demo bench clean

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

demo: build
	@$(BUILD_DIR)/tools/zbctl/zbctl run

clean:
	rm -rf build build-*

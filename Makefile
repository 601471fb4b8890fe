# The two commands a newcomer needs: `make run` and `make test`.
BUILD_DIR ?= build
BUILD_TYPE ?= RelWithDebInfo
CMAKE_FLAGS ?=

.PHONY: all deps build run test test-desktops format bench clean

all: build

deps:
	@scripts/install-deps

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

build: deps $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR)

run: build
	$(BUILD_DIR)/narv

test: build
	scripts/run-tests $(BUILD_DIR)

# The real program on real shells started headless (sway, KWin, GNOME Shell);
# their packages come with scripts/install-deps --desktops.
test-desktops: build
	scripts/install-deps --desktops
	tests/desktops/run $(BUILD_DIR)

# Builds only what the benchmark runs, not the tests.
bench: deps $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) --target narv bench_session bench_breakwindows bench_floor bench_floor_qt bench_history
	bench/run $(BUILD_DIR)

format:
	find src tests bench -name '*.cpp' -o -name '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD_DIR)

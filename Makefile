# Entry points: `make run` starts the program, `make test` runs the tests, `make bench` the benchmarks.
# Each installs what is missing (scripts/setup) and builds first.
BUILD_DIR ?= build
JOBS ?= 2
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo
# CI builds with warnings as errors (.ci/run runs with CI=true).
ifeq ($(CI),true)
CMAKE_FLAGS += -DPIXCOVE_WERROR=ON
endif

.PHONY: all setup configure build run test bench install deb check-deb translations clean

all: build

setup:
	@scripts/setup

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja $(CMAKE_FLAGS)

configure: setup $(BUILD_DIR)/build.ninja

build: configure
	cmake --build $(BUILD_DIR) -j$(JOBS)

run: build
	$(BUILD_DIR)/src/app/pixcove $(ARGS)

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j$(JOBS) --timeout 600

bench: build
	bench/run $(BUILD_DIR)

# `make install PREFIX=/opt/pixcove`: the programs, their modules, the desktop entry, icons, manual
# pages and completion under PREFIX (default /usr/local).
PREFIX ?= /usr/local
install: build
	cmake --install $(BUILD_DIR) --prefix $(PREFIX)

# A Debian package of the same, under /usr, with its dependencies from dpkg-shlibdeps.
deb: build
	cd $(BUILD_DIR) && cpack -G DEB

# Installs that package into a fresh Debian 12 chroot (debootstrap; root and network) and runs it.
check-deb: deb
	scripts/check-deb

translations: configure
	cmake --build $(BUILD_DIR) --target translations

clean:
	rm -rf $(BUILD_DIR)

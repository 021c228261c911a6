# The two commands a newcomer needs: `make run` starts KEVRO, `make test` runs every test.
# Both install the Debian packages that are missing, configure and build first.

BUILD_DIR ?= build
DEBS := cmake ninja-build g++ pkg-config \
        qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev qt6-qpa-plugins \
        libqt6sql6-sqlite libqt6sql6-psql libqt6sql6-odbc libarchive-dev unixodbc-dev \
        gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav \
        xvfb xauth xdg-utils fonts-dejavu-core

.PHONY: run test build deps bench clean

deps:
	@tools/install-deps.sh $(DEBS)

build: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja >/dev/null
	@cmake --build $(BUILD_DIR)

run: build
	@if [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then $(BUILD_DIR)/kevro; \
	else echo "No display here: starting KEVRO on a virtual one (xvfb-run)."; xvfb-run -a $(BUILD_DIR)/kevro; fi

test: build
	@cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure

bench: build
	@QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/bench/bench_flexgrid_fill

clean:
	rm -rf $(BUILD_DIR)

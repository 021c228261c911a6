# The two commands a newcomer needs: `make run` starts KEVRO, `make test` runs every test.
# Both install the Debian packages that are missing, configure and build first.

BUILD_DIR ?= build
DEBS := cmake ninja-build g++ pkg-config \
        qt6-base-dev qt6-base-dev-tools qt6-multimedia-dev qt6-qpa-plugins \
        libqt6sql6-sqlite libqt6sql6-psql libqt6sql6-odbc libarchive-dev unixodbc-dev \
        gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-libav \
        xvfb xauth xdg-utils fonts-dejavu-core python3
# The tests also run the catalogue against a real PostgreSQL server of their own, build executables
# with version resources with mingw-w64's binutils and read them back with Debian's pefile; Debian's
# distlib brings real launchers whose version block is not the one the version API reads. The screens whose
# behaviour hangs on focus and activation run on a virtual display under openbox (x11-utils tells when it is up).
# Disc images are made by the tests with xorriso, genisoimage and udftools; kevro-check's records are checked
# against their schema with python3-jsonschema.
TEST_DEBS := postgresql-15 postgresql-client-15 python3 libsqliteodbc unixodbc \
             binutils-mingw-w64-x86-64 binutils-mingw-w64-i686 python3-pefile python3-distlib \
             openbox x11-utils xorriso genisoimage udftools python3-jsonschema
# The scan benchmark compares the expansion with bsdtar, the evaluation's with the sqlite3 shell; the image
# benchmark makes its image with xorriso.
BENCH_DEBS := libarchive-tools sqlite3 xorriso

.PHONY: run test build deps test-deps catalogue bench clean

deps:
	@tools/install-deps.sh $(DEBS)

test-deps:
	@tools/install-deps.sh $(TEST_DEBS)

build: deps
	@cmake -S . -B $(BUILD_DIR) -G Ninja >/dev/null
	@cmake --build $(BUILD_DIR)

# A first start gets the embedded demo catalogue and the demo disc to scan; existing ones are left alone.
catalogue: build
	@[ -f $(BUILD_DIR)/kevro.db ] || $(BUILD_DIR)/kevro-setup --demo
	@[ -d $(BUILD_DIR)/demo-disc ] || $(BUILD_DIR)/kevro-setup --demo-disc

run: catalogue
	@if [ -n "$$DISPLAY$$WAYLAND_DISPLAY" ]; then $(BUILD_DIR)/kevro; \
	else echo "No display here: starting KEVRO on a virtual one (xvfb-run)."; xvfb-run -a $(BUILD_DIR)/kevro; fi

test: test-deps build
	@tools/with-postgres.sh $(BUILD_DIR) sh -c 'cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure'


# The benchmarks compare with find and bsdtar (libarchive-tools) on the same data in the same run.
# Without bsdtar the scan benchmark still runs and skips that one ratio. The disc-like tree it walks is
# laid out once in $(BUILD_DIR)/bench-disc (or $KEVRO_BENCH_DISC).
bench: build
	@tools/install-deps.sh $(BENCH_DEBS) || echo "bsdtar missing: the expansion ratio will be skipped"
	@QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/bench/bench_flexgrid_fill
	@QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/bench/bench_scan_speed
	@$(BUILD_DIR)/bench/bench_evaluation_speed
	@$(BUILD_DIR)/bench/bench_check_speed
	@QT_QPA_PLATFORM=offscreen $(BUILD_DIR)/bench/bench_viewer_fill
	@$(BUILD_DIR)/bench/bench_image_speed

clean:
	rm -rf $(BUILD_DIR)

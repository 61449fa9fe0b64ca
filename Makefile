# The front door. Every target installs the Debian packages it lacks (and says so), builds what it needs, and runs.

BUILD := build
SAMPLE := samples/robot_14_takes.glb
FUZZ_SECONDS ?= 60
# Presets whose plug-ins make test-bytes compares with that of the build.
BYTES ?= gcc-o0 clang-o0 clang-o2
# A folder of larger scenes to test and measure with; without one, the tests that need it are skipped.
SCENES ?=
CLANG_SANITIZERS := clang libclang-rt-dev llvm
# Debian's npm, unless there is one.
NPM = $(shell command -v npm > /dev/null || echo nodejs npm)
CONFIGURE := cmake -DTV2_SCENES_DIR=$(SCENES) --preset

.PHONY: help demo build test test-asan test-tsan test-arm64 test-bytes test-viewers sweep fuzz coverage bench \
        screenshot package package-debian package-windows test-packages compare-packages windows test-windows lint \
        format install clean packages

help: ## Show this list
	@awk -F ':.*## ' '/^[a-z0-9-]+:.*## / { printf "  make %-16s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)

demo: build ## Export a take of a sample scene, validate the file, draw it and write a page that plays it
	@mkdir -p out
	$(BUILD)/bin/tv2 export $(SAMPLE) out/dance.tv2
	$(BUILD)/bin/tv2 info out/dance.tv2
	$(BUILD)/bin/tv2 check out/dance.tv2
	$(BUILD)/bin/tv2 picture out/dance.tv2 out/dance.svg
	$(BUILD)/bin/tv2 view --no-open out/dance.tv2 -o out/dance.html
	@echo "Open out/dance.html in a browser: it plays the take."

build: packages ## Build the command (build/bin/tv2), the plug-in, the libraries and the Python package
	@cmake --preset release > /dev/null
	@cmake --build --preset release --target tv2 tv2_motionbuilder_export_tool mobu_host \
	    tev2_playback_async tev2_playback_c tev2_python tv2_manual

test: packages ## Build everything and run all tests
	@scripts/install_packages.sh xvfb valgrind python3-jsonschema man-db bash-completion python3-matplotlib mypy
	@$(CONFIGURE) release > /dev/null
	@cmake --build --preset release
	scripts/run_tests.sh $(BUILD) -LE viewers
	@echo "Left out: checks with Blender, a browser and the glTF validator. make test-viewers runs them."

test-asan: packages ## Run the tests under AddressSanitizer and UndefinedBehaviorSanitizer
	@scripts/install_packages.sh xvfb $(CLANG_SANITIZERS)
	@$(CONFIGURE) asan > /dev/null
	@cmake --build --preset asan
	scripts/run_tests.sh $(BUILD)/asan -LE viewers -E InProportion
	@echo "Left out: tests of how much memory the readers take, which measure them without the sanitizers'."

test-tsan: packages ## Play one clip on many threads, and load on others, under ThreadSanitizer
	@cmake --preset tsan > /dev/null
	@cmake --build --preset tsan
	$(BUILD)/tsan/bin/tev2_playback_thread_tests --gtest_brief=1

test-arm64: packages ## Test format library and playback built for 64-bit ARM, in an emulator
	@scripts/install_packages.sh g++-aarch64-linux-gnu qemu-user googletest
	@cmake --preset arm64 > /dev/null
	@cmake --build --preset arm64
	ctest --test-dir $(BUILD)/arm64 --output-on-failure --no-tests=error -j$$(nproc) \
	    -R '^tev2_(loader|playback|evaluation)_tests$$'

test-bytes: build ## Export the samples with plug-ins of the build, and of the compilers and levels BYTES; compare
	@scripts/install_packages.sh clang
	@cmake --build --preset release --target export_rich_scene
	scripts/same_bytes.sh release $(BYTES)

test-viewers: build ## Check GLBs and pages with a validator, Blender, three.js and a browser; installs them all
	@scripts/install_packages.sh chromium blender python3-numpy $(NPM)
	cd tests/js && npm ci --ignore-scripts --no-audit --no-fund
	@$(CONFIGURE) release > /dev/null
	@cmake --build --preset release --target glb_scene_files viewer_scenes
	TV2_NO_SKIPS=1 ctest --test-dir $(BUILD) --output-on-failure --no-tests=error -j$$(nproc) -L viewers

sweep: packages ## Load every damaged form of the fixtures under the sanitizers (make test-asan: a share of them)
	@scripts/install_packages.sh $(CLANG_SANITIZERS)
	@cmake --preset asan > /dev/null
	@cmake --build --preset asan --target tev2_robustness_tests scene_import_tests
	TV2_SWEEP=all $(BUILD)/asan/bin/tev2_robustness_tests --gtest_brief=1 --gtest_filter='*Damage*'
	TV2_SWEEP=all $(BUILD)/asan/bin/scene_import_tests --gtest_brief=1 --gtest_filter='*DamageSweep*'

coverage: packages ## Report the line coverage of format library and exporter: at least 95 %
	@scripts/install_packages.sh gcovr
	@cmake --preset coverage > /dev/null
	@cmake --build --preset coverage
	scripts/coverage.sh

fuzz: packages ## Search for files that break the readers, FUZZ_SECONDS=60 with each target
	@scripts/install_packages.sh $(CLANG_SANITIZERS)
	@cmake --preset asan > /dev/null
	@cmake --build --preset asan --target fuzz_targets
	scripts/fuzz.sh $(FUZZ_SECONDS)

bench: packages ## Measure speed beside a floor of the same run, 21 times each, and print one table
	@scripts/install_packages.sh libbenchmark-dev python3
	@$(CONFIGURE) release -DTV2_BUILD_BENCH=ON > /dev/null
	cmake --build --preset release --target bench

screenshot: build ## Take the pictures of the export dialog and of the page of tv2 view in docs/
	@scripts/install_packages.sh xvfb imagemagick chromium
	scripts/screenshot.sh $(BUILD)
	scripts/view_screenshots.py $(BUILD)/bin/tv2

package: package-debian package-windows ## Build the Debian packages and the zip for Windows, in out/packages

package-debian: packages
	@scripts/install_packages.sh debhelper dh-python dpkg-dev lintian
	scripts/package_debian.sh out/packages $(BUILD)/packages
	lintian --allow-root --fail-on error,warning out/packages/*.changes

package-windows: windows
	@scripts/install_packages.sh dpkg-dev
	scripts/package_windows.py $(BUILD)/windows out/packages

test-packages: ## Install what make package built in a bare Debian 12 and try it there; try the zip under Wine
	@scripts/install_packages.sh mmdebstrap uidmap wine64 xvfb xauth
	scripts/test_packages.sh out/packages $(BUILD)/bare
	scripts/test_windows_package.sh out/packages $(BUILD)/windows_package

compare-packages: ## Build the packages again, elsewhere and for another user: they must be the same bytes
	scripts/compare_packages.sh out/packages $(BUILD)/packages_again

windows: packages ## Build the command and the plug-in for 64-bit Windows (build/windows)
	@scripts/install_packages.sh g++-mingw-w64-x86-64 libz-mingw-w64-dev googletest
	@cmake --preset windows > /dev/null
	@cmake --build --preset windows --target tv2 tv2_motionbuilder_export_tool \
	    tv2_export_rules_module mobu_host

test-windows: build windows ## Run the tests of the Windows build under Wine; compare its files with those of Linux
	@scripts/install_packages.sh wine64 xvfb xauth
	@cmake --build --preset windows
	scripts/test_windows.sh
	@cmake --build --preset release --target export_rich_scene
	scripts/same_bytes.sh release windows

lint: packages ## Check formatting, the tree (dependencies, widths, lengths) and run clang-tidy
	@scripts/install_packages.sh clang-format clang-tidy python3
	scripts/lint.sh

format: ## Format all sources
	@scripts/install_packages.sh clang-format
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

install: build ## Install the command, the plug-in and the library (PREFIX=/usr/local)
	cmake --install $(BUILD) --prefix $(or $(PREFIX),/usr/local)

clean: ## Remove everything that was built
	rm -rf $(BUILD) out

packages:
	@scripts/install_packages.sh

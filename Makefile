# Front door: each target installs what is missing, then wraps the CMake presets.
.PHONY: deps run edit test test-browser test-tsan test-windows fuzz bench lint format clean

deps:
	@bash tools/install-deps.sh

# The main job: the host runs the bundled example, which reads examples/ImagePipeline/input.png, blurs and
# inverts it in a nested graph and writes examples/ImagePipeline/output.png.
run: deps
	cmake --preset release
	cmake --build --preset release
	./build/release/bin/vantel run examples/ImagePipeline/ImagePipeline.json --frames 60
	@echo "vantel: wrote examples/ImagePipeline/output.png"

# The editor on a copy of the example (build/edit-example, kept between runs): open the address it prints.
edit: deps
	cmake --preset release
	cmake --build --preset release
	mkdir -p build/edit-example
	cp -n examples/ImagePipeline/ImagePipeline.json examples/ImagePipeline/input.png build/edit-example/
	./build/release/bin/vantel edit build/edit-example/ImagePipeline.json

test: deps
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev

# The editor page in Debian's headless Chromium, driven by playwright-core, against the dev build's host.
test-browser: deps
	cmake --preset dev
	cmake --build --preset dev --target vantel VantelStandard vantel-editor-page
	cd Apps/EditorPage && VANTEL_HOST=$(CURDIR)/build/dev/bin/vantel npm test --silent

# The threaded code's tests under ThreadSanitizer; Tasks::Shutdown's scenario needs an executable of its own.
test-tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan --target ExecutionTests TasksShutdownTests
	TSAN_OPTIONS=halt_on_error=1 ./build/tsan/bin/ExecutionTests --gtest_brief=1
	TSAN_OPTIONS=halt_on_error=1 ./build/tsan/bin/TasksShutdownTests --gtest_brief=1

# The Windows build: cross-built with MinGW-w64 (its compiled dependencies built once into ~/.cache/vantel), every
# test suite run under Wine, then held to the Linux build (dev): the bundled example's picture has the same
# pixels, and each build loads the other's project files and saves them to the same bytes.
test-windows:
	@VANTEL_WINDOWS=1 bash tools/install-deps.sh
	cmake --preset windows
	cmake --build --preset windows
	ctest --preset windows
	tools/wine-run.sh --wait
	cmake --preset dev
	cmake --build --preset dev --target vantel VantelStandard
	bash tools/check-windows-outputs.sh
	tools/wine-run.sh --wait

# The project loader's fuzzer and then the edit-sequence fuzzer, a minute each, from their seed corpora; new
# inputs go to scratch folders so that the checked-in corpora stay as written.
FUZZ_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
fuzz:
	@VANTEL_FUZZ=1 bash tools/install-deps.sh
	cmake --preset fuzz
	cmake --build --preset fuzz --target LoaderFuzzer EditFuzzer
	rm -rf build/fuzz/corpus build/fuzz/edit-corpus && mkdir -p build/fuzz/corpus build/fuzz/edit-corpus
	$(FUZZ_ENV) ./build/fuzz/bin/LoaderFuzzer -max_total_time=60 -print_final_stats=1 build/fuzz/corpus fuzz/corpus
	$(FUZZ_ENV) ./build/fuzz/bin/EditFuzzer -max_total_time=60 -print_final_stats=1 build/fuzz/edit-corpus \
		fuzz/edit-corpus

bench: deps
	cmake --preset bench
	cmake --build --preset bench
	@for program in build/bench/bin/*Benchmark; do \
		[ -x "$$program" ] || continue; echo "== $$program"; "$$program" || exit 1; done

# Style, then the layering: no file of the core may include a header of a layer above its own (tools/layers.txt).
lint: deps
	git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run --Werror
	python3 tools/check-layers.py

format: deps
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build

# A thin front: everything is built by CMake, and the targets here say what a person wants.
.PHONY: all build demo deps tables docs clean fuzz fuzz-valgrind \
        test test-asan test-tsan test-clang test-windows test-32 test-be test-abi test-package torture \
        web test-browser pictures windows abi-baseline package package-windows lint coverage mutate bench bench-tool \
        bench-detect bench-build

JOBS ?= $(shell nproc 2>/dev/null || echo 2)
SIZE ?= 256
SECONDS ?= 60

all: build

deps:
	@tools/deps.sh

build: deps
	cmake --preset release
	cmake --build --preset release -j$(JOBS)

# Converts the sample texts in examples/ and tells what it does.
demo:
	@tools/deps.sh demo
	cmake --preset release
	cmake --build --preset release -j$(JOBS) --target kx kxstr
	examples/demo.sh build/release/kx

test: build
	@tools/deps.sh python
	ctest --preset release -j$(JOBS)

# The same tests under AddressSanitizer and UndefinedBehaviorSanitizer.
test-asan: deps
	cmake --preset asan
	cmake --build --preset asan -j$(JOBS)
	ctest --preset asan -j$(JOBS)

# Sixteen threads that come to the library at once, from a cold start, under ThreadSanitizer.
test-tsan: deps
	cmake --preset tsan
	cmake --build --preset tsan -j$(JOBS) --target kxstr_tests
	ctest --preset tsan -R '^Threads\.'

# The same tests, the library and the benchmarks compiled by Clang.
test-clang:
	@tools/deps.sh default bench clang
	cmake --preset clang
	cmake --build --preset clang -j$(JOBS)
	ctest --preset clang -j$(JOBS)

# What of src/ the tests of the library run, by lines and branches, with the kernels of every family that is here.
coverage:
	@tools/deps.sh default coverage
	cmake --preset coverage
	cmake --build --preset coverage -j$(JOBS) --target kxstr_tests kx
	tools/coverage.sh build/coverage

# How many of 400 small faults in the sources the tests see; takes hours, and goes on where it was. build/mutate/report.md
mutate:
	@tools/deps.sh default mutate
	nice -n 19 tools/mutate.py --jobs $(JOBS)

# The long form of the tests that kill writers, let processes fight over one settings file, and make memory and system
# calls fail.
torture: build
	KXSTR_TORTURE=1 build/release/kxstr_tests --gtest_filter='RegistryTorture.*'
	build/release/faults

# Each fuzz target for so many SECONDS, half of them without the vector kernels; `make fuzz TARGETS=text` runs one.
fuzz:
	@tools/deps.sh default clang
	cmake --preset fuzz
	cmake --build --preset fuzz -j$(JOBS)
	fuzz/run.py --seconds $(SECONDS) build/fuzz $(TARGETS)

# The inputs that `make test` replays, under valgrind, which sees what is read before it was written.
fuzz-valgrind: build
	@tools/deps.sh valgrind
	fuzz/run.py --valgrind build/release $(TARGETS)

# The reference of the headers, and the pages of docs/, in build/docs/html.
docs:
	@tools/deps.sh docs
	@mkdir -p build
	doxygen docs/Doxyfile

# The page that converts files in the browser, one file: build/web/index.html.
web:
	@tools/deps.sh web
	cmake --preset wasm
	cmake --build --preset wasm -j$(JOBS) --target web

# That page, and the charts of `kx chart`, in headless Chromium.
test-browser: web
	@tools/deps.sh demo browser
	cmake --preset release
	cmake --build --preset release -j$(JOBS) --target kx
	/usr/bin/python3 tests/browser/browser_test.py build/release/kx build/web/index.html

# The pictures of docs/images, drawn anew by headless Chromium.
pictures:
	@tools/deps.sh demo browser
	cmake --preset release
	cmake --build --preset release -j$(JOBS) --target kx
	/usr/bin/python3 tools/pictures.py build/release/kx

# The exported names, their arguments and layouts against the state on record, which abi-baseline writes anew.
test-abi abi-baseline:
	@tools/deps.sh demo abi
	cmake --preset abi
	cmake --build --preset abi -j$(JOBS) --target kxstr
	tests/abi/check.sh build/abi/libkxstr.so $(if $(filter abi-baseline,$@),--renew)

# Debian packages in build/package, looked at by lintian.
package:
	@tools/deps.sh demo package
	cmake --preset package
	cmake --build --preset package -j$(JOBS)
	cd build/package && rm -f *.deb && cpack && lintian --fail-on error *.deb

# Installs the packages (as root), builds and runs outside programs against them, and removes them again.
test-package: package
	tests/install/packages_test.sh build/package

# A zip for 32-bit and one for 64-bit Windows.
package-windows: windows
	for platform in windows-x86 windows-x64; do (cd build/$$platform && cpack) || exit 1; done

# kxstr.dll, its import library and kx.exe for 32-bit and 64-bit Windows, in build/windows-x86 and build/windows-x64.
windows:
	@tools/deps.sh windows
	for platform in windows-x86 windows-x64; do \
		cmake --preset $$platform && cmake --build --preset $$platform -j$(JOBS) && \
		python3 tests/check_exports.py docs/exports.txt build/$$platform/kxstr.dll || exit 1; \
	done

# The same tests on real system interfaces: under Wine, on eight systems one after another.
test-windows: build
	@tools/deps.sh windows wine
	cmake --preset windows-x64 -DKXSTR_TESTS=ON
	cmake --build --preset windows-x64 -j$(JOBS)
	cmake --build --preset release -j$(JOBS) --target dump_portable settings
	tests/windows/run_all.py build/windows-x64 build/release

# The same tests in a 32-bit process.
test-32:
	@tools/deps.sh 32
	cmake --preset m32
	cmake --build --preset m32 -j$(JOBS)
	ctest --preset m32 -j$(JOBS)

# The same tests on a big-endian host.
test-be:
	@tools/deps.sh be
	cmake --preset s390x
	cmake --build --preset s390x -j$(JOBS)
	ctest --preset s390x -j$(JOBS)

# Configures only: clang-tidy needs the compile commands, of the benchmarks too.
lint:
	@tools/deps.sh default bench lint
	cmake --preset lint
	tools/lint.sh build/lint

# Ours beside the C library and ICU, with the goal of each row; FILTER='W6azTowz /ja/' runs the rows that match.
bench: bench-build
	bench/table.py --json build/release/bench/measured.json $(FILTER)

# kx on large files beside iconv, uconv and sort; SIZE in MiB.
bench-tool: bench-build
	bench/tool.py --size $(SIZE) $(FILTER)

# How often libkxdetect, uchardet, ICU, chardet and charset-normalizer find the page of a text, and how fast.
bench-detect: bench-build
	bench/detect.py --peers

bench-build:
	@tools/deps.sh default bench
	cmake --preset release -DKXSTR_BENCH=ON
	cmake --build --preset release -j$(JOBS)
	bench/corpus.py build/release/bench/corpus

# Rewrites the generated C++ from data/.
tables:
	python3 tools/gen_tables.py

clean:
	rm -rf build

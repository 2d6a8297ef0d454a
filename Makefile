# A thin front: everything is built by CMake, and the targets here say what a person wants.
.PHONY: all build demo test test-asan torture windows lint bench clean deps tables

JOBS ?= $(shell nproc 2>/dev/null || echo 2)

all: build

deps:
	@tools/deps.sh

build: deps
	cmake --preset release
	cmake --build --preset release -j$(JOBS)

# Converts the sample texts in examples/ and tells what it does.
demo: deps
	cmake --preset release
	cmake --build --preset release -j$(JOBS) --target kx kxstr
	examples/demo.sh build/release/kx

test: build
	ctest --preset release -j$(JOBS)

# The same tests under AddressSanitizer and UndefinedBehaviorSanitizer.
test-asan: deps
	cmake --preset asan
	cmake --build --preset asan -j$(JOBS)
	ctest --preset asan -j$(JOBS)

# The long form of the tests that kill writers and let processes fight over one settings file.
torture: build
	KXSTR_TORTURE=1 build/release/kxstr_tests --gtest_filter='RegistryTorture.*'

# kxstr.dll, its import library and kx.exe for 32-bit and 64-bit Windows, in build/windows-x86 and build/windows-x64.
windows:
	@tools/deps.sh windows
	for platform in windows-x86 windows-x64; do \
		cmake --preset $$platform && cmake --build --preset $$platform -j$(JOBS) && \
		python3 tests/check_exports.py docs/exports.txt build/$$platform/kxstr.dll || exit 1; \
	done

lint: deps
	cmake --preset release
	tools/lint.sh build/release

bench: deps
	cmake --preset release -DKXSTR_BENCH=ON
	cmake --build --preset release -j$(JOBS) --target kxstr_bench
	build/release/kxstr_bench

# Rewrites the generated C++ from data/.
tables:
	python3 tools/gen_tables.py

clean:
	rm -rf build

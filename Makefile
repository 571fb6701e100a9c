# The two set-up commands are `make demo` and `make test`; the rest are
# building blocks and developer conveniences.
BUILD        ?= build
BUILD_SAN    ?= build-sanitize
BUILD_FUZZ   ?= build-fuzz
FUZZ_SECONDS ?= 60
FUZZ_TARGETS ?=
BUILD_TYPE   ?= RelWithDebInfo
JOBS         ?= $(shell nproc 2>/dev/null || echo 2)
GENERATOR    := $(shell command -v ninja >/dev/null 2>&1 && echo Ninja || echo "Unix Makefiles")
DEMO         ?= examples/sleepstudy.gmx

.PHONY: deps configure build demo test sanitize test-sanitize fuzz-build fuzz clean

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -G "$(GENERATOR)" -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

demo: build
	$(BUILD)/src/app/glmixfit --output-dir demo-output --html --json $(DEMO)

test: build
	@cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

sanitize: deps
	@cmake -S . -B $(BUILD_SAN) -G "$(GENERATOR)" -DCMAKE_BUILD_TYPE=Debug -DGLMIX_SANITIZE=ON >/dev/null
	@cmake --build $(BUILD_SAN) -j $(JOBS)

test-sanitize: sanitize
	@cd $(BUILD_SAN) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure -j $(JOBS)

# The libFuzzer targets (clang): their build, and a run of each for
# FUZZ_SECONDS (all of fuzz/, or those named in FUZZ_TARGETS).
fuzz-build: deps
	@CC=clang CXX=clang++ cmake -S . -B $(BUILD_FUZZ) -G "$(GENERATOR)" -DCMAKE_BUILD_TYPE=Debug -DGLMIX_FUZZ=ON >/dev/null
	@cmake --build $(BUILD_FUZZ) -j $(JOBS) --target fuzz_targets

fuzz: fuzz-build
	@bash scripts/fuzz.sh $(BUILD_FUZZ) $(FUZZ_SECONDS) $(FUZZ_TARGETS)

clean:
	rm -rf $(BUILD) $(BUILD_SAN) $(BUILD_FUZZ) demo-output

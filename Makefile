# The front: everything is done by CMake with the presets of CMakePresets.json.
.DEFAULT_GOAL := help
.PHONY: help run test screenshots bench bench-check fuzz lint format clean
sample := samples/crop-two-steppers.orrery
plot := build/dev/bin/orrery-batch plot $(sample)
growth := Farm/Crop/Canopy/Growth
configured = test -f build/$(1)/build.ninja || cmake --preset $(1)

help: ## Say what there is to make
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "make %-11s %s\n", $$1, $$2 }' Makefile

run: ## Build, run a sample through the engine, draw what came out, and open the application on it
	@scripts/install-packages build
	$(call configured,dev) -DORRERY_TESTS=OFF -DORRERY_BENCH=OFF
	cmake --build --preset dev --target orrery orrery-batch Zephyr
	build/dev/bin/orrery-batch run --report $(sample)
	@$(plot) --axis1 day --include $(growth)/biomass --include $(growth)/grain \
		--include 'Farm/Soil/Water balance/soil water' --png build/crop-curves.png
	@$(plot) --axis1 /Farm/Management/irrigation --axis2 '/Farm/Management/sowing temperature' --hold day=258 \
		--include $(growth)/biomass --include $(growth)/grain --rotate 30 --light 2 --png build/crop-surfaces.png
	@echo "Pictures: build/crop-curves.png build/crop-surfaces.png"
	@scripts/show-application $(sample) build/orrery-window.png

test: ## Build everything and run the tests
	@scripts/install-packages build test
	cmake --preset dev -DORRERY_TESTS=ON -DORRERY_BENCH=OFF
	cmake --build --preset dev
	ctest --preset dev

screenshots: ## Fill build/screenshots with pictures of the windows in all their states
	@scripts/install-packages build test
	cmake --preset dev -DORRERY_TESTS=ON -DORRERY_BENCH=OFF
	cmake --build --preset dev --target orrery-screenshots Zephyr
	ORRERY_SCREENSHOTS=build/screenshots build/dev/bin/orrery-screenshots

bench: ## Measure the hot paths in a release build, and beside peers
	@scripts/install-packages build bench peers
	cmake --preset release -DORRERY_TESTS=OFF -DORRERY_BENCH=ON
	cmake --build --preset release
	for bench in build/release/bin/*Bench; do $$bench || exit 1; done
	bench/compare-peers build/release
	bench/compare-starts build/release/bin

bench-check: ## Compare the inner loops' instruction counts with those that are kept
	@scripts/install-packages build bench
	cmake --preset release -DORRERY_TESTS=OFF -DORRERY_BENCH=ON
	cmake --build --preset release --target kernels
	bench/check-instructions build/release/bin/kernels $(UPDATE)

fuzz: ## Feed the parsers damaged input under libFuzzer, TIME seconds each; TIME=60 for a long look
	@scripts/install-packages build fuzz
	$(call configured,fuzz)
	cmake --build --preset fuzz
	fuzz/run-fuzzers build/fuzz $(or $(TIME),5)

lint: ## Check format, clang-tidy, and that every header compiles alone
	@scripts/install-packages build test bench lint
	scripts/check-format
	cmake --preset dev -DORRERY_TESTS=ON -DORRERY_BENCH=ON
	cmake --build --preset dev --target check-headers
	scripts/check-tidy

format: ## Format all sources
	@scripts/install-packages lint
	scripts/check-format --fix

clean: ## Remove everything that was built
	rm -rf build

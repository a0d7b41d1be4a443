# The two commands a developer needs: `make run` and `make test`.
BUILD_DIR     ?= build
SAN_BUILD_DIR ?= build-san
TSAN_BUILD_DIR ?= build-tsan
BUILD_TYPE    ?= RelWithDebInfo
JOBS          ?= $(shell nproc)
WERROR        := $(if $(CI),ON,OFF)
CMAKE_FLAGS   := -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DMERIDON_WERROR=$(WERROR)
# Without a display the demo runs headless for a few seconds and leaves its last frame as a screenshot.
HEADLESS_ARGS := $(if $(DISPLAY)$(WAYLAND_DISPLAY),,--seconds 5 --screenshot ../Meridon-data/screenshots/demo.png)
RUN_ARGS      ?= --world demo $(HEADLESS_ARGS)

# The game tree the demo runs from: the bundled modules, their meshes and shaders, the library's shaders and font.
DEMO_GAME_TARGETS := meridon_shaders quorl_font_atlas MERIDON_render_shaders MERIDON_example_meshes \
                 $(foreach class,MERIDON_Mod GAME_Mod SERVER_Mod,MERIDON_example.$(class)) \
                 MERIDON_planet.MERIDON_Mod MERIDON_planet.GAME_Mod MERIDON_demo.SERVER_Mod \
                 MERIDON_link.SERVER_Mod MERIDON_link.GAME_Mod MERIDON_render.GAME_Mod \
                 MERIDON_player.SERVER_Mod MERIDON_player.GAME_Mod

# The ThreadSanitizer suite: the launcher with its four loops, the tests that run them together (the demo walked in a
# window among them), and the tests of what the loops share (module registries, the settings' reload thread, ids made
# on many threads, SharedMutex).
TSAN_TARGETS  := meridon_launcher meridon_launcher_tests meridon_world_fault_tests meridon_game_tests \
                 meridon_module_tests quorl_tests quorl_filesystem_tests $(DEMO_GAME_TARGETS)
TSAN_TESTS    := Launcher|HookFailure|WorldFault|GameTest|UniqueIdTest|ModuleClassTest|ConfigFileTest|SharedMutex|PlayerWindow
# Launchers started by the tests print to pipes that the tests keep, so every process writes its reports here.
TSAN_REPORTS  := $(abspath $(TSAN_BUILD_DIR))/tsan-reports

.PHONY: all setup build run test sanitize-test tsan-test clean

all: build

setup:
	@scripts/setup

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS)

build: setup $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	cd $(BUILD_DIR)/root && ./meridon $(RUN_ARGS)

test: build
	ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

sanitize-test: setup
	cmake -S . -B $(SAN_BUILD_DIR) $(CMAKE_FLAGS) -DCMAKE_BUILD_TYPE=Debug -DMERIDON_SANITIZE=ON -DMERIDON_BENCHMARKS=OFF
	cmake --build $(SAN_BUILD_DIR) -j $(JOBS)
	ctest --test-dir $(SAN_BUILD_DIR) --output-on-failure -j $(JOBS)

tsan-test: setup
	cmake -S . -B $(TSAN_BUILD_DIR) $(CMAKE_FLAGS) -DMERIDON_TSAN=ON -DMERIDON_BENCHMARKS=OFF
	cmake --build $(TSAN_BUILD_DIR) -j $(JOBS) --target $(TSAN_TARGETS)
	rm -rf $(TSAN_REPORTS) && mkdir -p $(TSAN_REPORTS)
	TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/tsan.supp \
	  log_path=$(TSAN_REPORTS)/report $(TSAN_OPTIONS)" \
	  ctest --test-dir $(TSAN_BUILD_DIR) --output-on-failure -j $(JOBS) -R '$(TSAN_TESTS)'; status=$$?; \
	if [ -n "$$(ls -A $(TSAN_REPORTS))" ]; then \
	  cat $(TSAN_REPORTS)/*; echo "ThreadSanitizer reported the above (kept in $(TSAN_REPORTS))"; exit 1; \
	fi; exit $$status

clean:
	rm -rf $(BUILD_DIR) $(SAN_BUILD_DIR) $(TSAN_BUILD_DIR)

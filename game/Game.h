#pragma once

#include "engine/FPSCounter.h"
#include "game/Export.h"
#include "game/entity/EnvironmentId.h"
#include "game/physics/DebugCollider.h"
#include "game/physics/DebugLine.h"
#include "game/physics/EnvironmentInfo.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorl::audio { class Studio; }
namespace quorl::graphics { class Window; }
namespace game { class GameSettings; }
namespace game::graphics { class GameRenderer; }
namespace game::input { class Joystick; }

/// The library's global state and the entry points the launcher calls. The library starts no thread: the launcher
/// runs Start and Ready, then four loops (render, game, input and, when hosting, server) while isActive holds, then
/// Stop. Work from other threads reaches the game loop only through Synchronize.
class MERIDON_EXPORT Game {
public:
    Game() = delete;

    /// A line the physics debug view draws, in the space of `entity` (world space when it is null or gone).
    using PhysicsLineDebug = game::physics::DebugLine;
    /// A collider the physics debug view draws, with its transform in world space.
    using PhysicsColliderDebug = game::physics::DebugCollider;

    // ---- Set by the launcher before Start ----------------------------------------------------------------------
    /// Null in a process without a renderer: a dedicated server, which skips every renderer and audio step.
    static game::graphics::GameRenderer* renderer;
    /// Null without a window.
    static quorl::graphics::Window* window;
    /// Null without audio.
    static quorl::audio::Studio* audio;
    static std::shared_ptr<game::GameSettings> settings;
    /// The loops run while this holds; Quit clears it.
    static std::atomic<bool> isActive;
    /// This process hosts the server and runs the server loop.
    static bool _is_server;
    /// World directory name, used for the save paths of entities.
    static std::string _current_world;
    /// Content modules (MERIDON_Mod) that Start loads, in this order.
    static std::vector<std::string> _mods;

    // ---- Input -------------------------------------------------------------------------------------------------
    /// Connected devices by GLFW joystick number; kept by the launcher.
    static std::map<int, std::shared_ptr<game::input::Joystick>> _joysticks;
    /// The cursor is captured and moves the view.
    static bool _mouseLook;
    /// 0 user interface, 1 play, 2 station.
    static uint8_t _inputMode;
    /// How the library reads both: Quit, from any thread, releases the mouse while the input loop and the renderer
    /// read them, so every access of ours goes through an atomic view of the plain field.
    static bool MouseLook() noexcept { return std::atomic_ref(_mouseLook).load(std::memory_order_relaxed); }
    static uint8_t InputMode() noexcept { return std::atomic_ref(_inputMode).load(std::memory_order_relaxed); }
    static bool uiVisible;

    // ---- World time and environment -----------------------------------------------------------------------------
    /// Whether ServerUpdate advances `timestamp`.
    static bool timeActive;
    /// Seconds added to the system clock to form `timestamp`.
    static double timeOffset;
    /// World time in seconds, advanced by the server tick.
    static double timestamp;
    static game::entity::EnvironmentId parentEnvironmentId;
    static game::entity::EnvironmentId relativeEnvironmentId;
    static bool environmentIsLoaded;
    static glm::dmat4 backgroundTransform;
    /// Gravity, ground and medium of each environment, by id; filled by modules, asked by the physics.
    static std::unordered_map<game::entity::EnvironmentId, game::physics::EnvironmentFunction> _environmentFunctions;

    // ---- Panels, monitors and debugging -------------------------------------------------------------------------
    static bool adminWindowOpen;
    static bool settingsWindowOpen;
    /// Development sliders "Test Slider 0" to "Test Slider 4", 0 to 1, that shaders may read.
    static std::array<float, 5> testSlider;
    static unsigned int currentMonitorID;
    static double currentMonitorX;
    static double currentMonitorY;
    static double currentMonitorDistance;
    static std::unordered_map<unsigned int, std::string> _monitors;
    static std::mutex _monitorsMutex;
    static int debugGizmoOp;
    static glm::dmat4 debugGizmoTransform;
    static bool debugClientSidePhysics;
    static bool debugServerSidePhysics;
    /// Physics debug data, triple-buffered: the server fills _back and swaps it with _staging under
    /// physicsDebugMutex; the render thread swaps _staging with _front when physicsDebugCollidersUpdated is set.
    static std::vector<PhysicsLineDebug> physicsDebugLines_front;
    static std::vector<PhysicsLineDebug> physicsDebugLines_staging;
    static std::vector<PhysicsLineDebug> physicsDebugLines_back;
    static std::vector<PhysicsColliderDebug> physicsDebugColliders_front;
    static std::vector<PhysicsColliderDebug> physicsDebugColliders_staging;
    static std::vector<PhysicsColliderDebug> physicsDebugColliders_back;
    static std::atomic<bool> physicsDebugCollidersUpdated;
    static std::mutex physicsDebugMutex;
    /// The server's one way into the buffers above, once at the end of a tick with the debug view on: `fill` gets
    /// the back buffers emptied, which are then swapped with the staging ones and physicsDebugCollidersUpdated set.
    static void PublishPhysicsDebug(
        std::function<void(std::vector<PhysicsLineDebug>& lines, std::vector<PhysicsColliderDebug>& colliders)> const&
            fill);

    // ---- Work for the game loop ----------------------------------------------------------------------------------
    static std::vector<std::function<void()>> _syncQueue;
    static std::mutex _syncMutex;

    // ---- Loop rates, ticked by the launcher -----------------------------------------------------------------------
    static quorl::FPSCounter mainRenderingFramerate;
    static quorl::FPSCounter serverFramerate;
    static quorl::FPSCounter inputFramerate;
    static quorl::FPSCounter gameFramerate;

    // ---- Lifecycle ------------------------------------------------------------------------------------------------
    /// Once, before Ready: Game_Start hooks, then loads and starts the content modules of `_mods`.
    static void Start();
    /// Once, when the world is about to run.
    static void Ready();
    /// Once, after the loops have ended: unloads content modules, calls Game_Stop hooks, then drops the client's
    /// entities and entity types.
    static void Stop();
    /// Asks every loop to end; callable from any thread or module.
    static void Quit() noexcept;
    /// An entry point kept for modules; does nothing.
    static void Pause();
    /// Enters play mode.
    static void Play();

    // ---- Loop bodies ----------------------------------------------------------------------------------------------
    /// One pass of the game loop. The argument is unused: the frame time comes from mainRenderingFramerate.
    static void Update(double);
    static void ClientUpdate();
    /// One server tick. `substeps` goes to the physics step.
    static void ServerUpdate(double dt, int substeps);
    static void InputUpdate(double dt);
    static void InputUpdate_Play(double dt);
    static void InputUpdate_Station(double dt);
    /// Queues work for the start of the next Update, from any thread. The queue's mutex is held while queued work
    /// runs, so queued work must not call Synchronize itself.
    static void Synchronize(std::function<void()> function);

    // ---- Input mode -----------------------------------------------------------------------------------------------
    /// Captures or frees the cursor. Capturing needs a focused window; otherwise mouse look stays off.
    static void SetMouseLook(bool on);
    static void SetInputMode_Ui();
    static void SetInputMode_Play();
    static void SetInputMode_Station();

    // ---- Interface set-up -----------------------------------------------------------------------------------------
    /// Our look for the interface library's style; needs a current interface context.
    static void SetupUiStyle();

    // ---- Devices, in joystick-number order; null when none matches -------------------------------------------------
    static std::shared_ptr<game::input::Joystick> GetFirstJoystick();
    static std::shared_ptr<game::input::Joystick> GetFirstGamepad();
    static std::shared_ptr<game::input::Joystick> GetJoystick(int index);
    /// The index-th connected joystick whose GUID matches `guid` (any when empty).
    static std::shared_ptr<game::input::Joystick> GetJoystick(std::string const& guid, int index);
    static std::shared_ptr<game::input::Joystick> GetGamepad(std::string const& guid, int index);
};

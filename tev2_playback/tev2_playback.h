#pragma once

// Playing TEV2 scene files from C and from every language that calls C: the library tev2_playback_c. C99.
//
//     char reason[256];
//     tev2_clip* clip = NULL;
//     if (tev2_clip_load("walk.tv2", NULL, &clip, reason, sizeof reason) != TEV2_OK)
//         return fprintf(stderr, "%s\n", reason), 1;
//     tev2_player* player = NULL;
//     tev2_player_create(clip, &player);
//     tev2_player_set_repeat(player, TEV2_REPEAT_LOOP);
//     for (int frame = 0; frame < 60; ++frame)
//     {
//         tev2_player_advance(player, 1.0 / 60.0);
//         const tev2_matrix* world = tev2_player_world(player); // one for each node
//     }
//     tev2_player_destroy(player);
//     tev2_clip_destroy(clip);
//
// A clip is the animation of a file: it never changes, and any number of threads may use it at once. A player is one
// instance of it at a time of its own; it is used by one thread at a time. Clips and players may be destroyed in any
// order: a player keeps what it needs of its clip. A handle may not be used after it was destroyed. Nothing else is
// shared between threads or calls.
//
// Text is UTF-8 and zero terminated. Times are in seconds, lengths in metres, angles in radians. Nodes, cameras and
// properties are indices from 0, in the order of the file; -1 is none. Handles, pointers to results and arrays of more
// than 0 elements must not be null, except where that is said. No exception reaches the caller.
//
// The interface is stable: tev2_playback_abi_version changes when a program has to be compiled again. Structures keep
// their layout; those that begin with their own size may grow at the end, and members beyond the size that the caller
// gives have the value 0.

#include <stddef.h>
#include <stdint.h>

#if !defined(_WIN32)
#define TEV2_PLAYBACK_EXPORTED __attribute__((visibility("default")))
#elif defined(TEV2_PLAYBACK_EXPORTS)
#define TEV2_PLAYBACK_EXPORTED __declspec(dllexport)
#else
#define TEV2_PLAYBACK_EXPORTED __declspec(dllimport)
#endif

#if defined(__cplusplus)
#define TEV2_PLAYBACK_API extern "C" TEV2_PLAYBACK_EXPORTED
#else
#define TEV2_PLAYBACK_API TEV2_PLAYBACK_EXPORTED
#endif

// What this header was written for; compare with what the library answers.
#define TEV2_PLAYBACK_ABI_VERSION 1
TEV2_PLAYBACK_API int32_t tev2_playback_abi_version(void);

typedef int32_t tev2_result;
enum
{
    TEV2_OK = 0,
    TEV2_ERROR_FILE = 1,    // it cannot be read, or is not a scene file
    TEV2_ERROR_MEMORY = 2,  // there is not enough; what was there before is as it was
    TEV2_ERROR_ARGUMENT = 3 // an index or a size out of range, or a number that an enumeration does not have
};

typedef struct tev2_clip tev2_clip;
typedef struct tev2_player tev2_player;

// Three rows of four numbers, the translation last in each: multiplies columns (x, y, z, 1). 48 bytes.
typedef struct tev2_matrix
{
    float m[3][4];
} tev2_matrix;

// Scaled, then turned, then moved. The rotation is x, y, z, w. 40 bytes.
typedef struct tev2_transform
{
    float translation[3];
    float scale[3];
    float rotation[4];
} tev2_transform;

// ---- Clips

enum // tev2_load_options.frame
{
    TEV2_FRAME_AS_STORED = 0,        // left-handed; up is what the file has
    TEV2_FRAME_RIGHT_HANDED_Y_UP = 1 // right-handed, +Y up; only mirrored where the up axis is unknown
};

typedef struct tev2_load_options
{
    size_t size; // sizeof(tev2_load_options)
    int32_t frame;
    int32_t reserved; // 0

    // What a file may cost at most; 0: no limit of its own.
    uint64_t most_file_bytes; // read into memory, by tev2_clip_load
    uint64_t most_bytes;      // of memory while reading, without the file and the clip
    uint64_t most_nodes;
    uint64_t most_nesting; // nodes from any node up to the top
} tev2_load_options;

// Loads a file (or a pipe, to its end); the path is UTF-8 on every system. Null options: as stored, without limits. On
// failure the clip is null, and `reason` receives the file and the cause, truncated to fit; null and 0 if it is not
// wanted. On success the reason is empty.
TEV2_PLAYBACK_API tev2_result tev2_clip_load(const char* path, const tev2_load_options* options,
                                             tev2_clip** clip, char* reason, size_t reason_size);

// The same for a file in memory, which may be freed afterwards.
TEV2_PLAYBACK_API tev2_result tev2_clip_load_memory(const void* bytes, size_t size,
                                                    const tev2_load_options* options, tev2_clip** clip,
                                                    char* reason, size_t reason_size);

// Lets go of the clip; its memory is freed with its last player. Null: nothing happens.
TEV2_PLAYBACK_API void tev2_clip_destroy(tev2_clip* clip);

// Bytes of memory.
TEV2_PLAYBACK_API size_t tev2_clip_size(const tev2_clip* clip);

TEV2_PLAYBACK_API void tev2_clip_time_range(const tev2_clip* clip, float* begin, float* end);

TEV2_PLAYBACK_API int32_t tev2_clip_node_count(const tev2_clip* clip);

// -1 at top level, and for an index out of range.
TEV2_PLAYBACK_API int32_t tev2_clip_node_parent(const tev2_clip* clip, int32_t node);

// Valid while the clip or one of its players lives. Null for an index out of range.
TEV2_PLAYBACK_API const char* tev2_clip_node_name(const tev2_clip* clip, int32_t node);

// The first node of that name, or -1. Takes the same time however many nodes there are.
TEV2_PLAYBACK_API int32_t tev2_clip_find_node(const tev2_clip* clip, const char* name);

// The direction that is up in the world of the file. Unknown where the file is not as the exporter writes it.
enum
{
    TEV2_UP_UNKNOWN = 0,
    TEV2_UP_PLUS_Y = 1,
    TEV2_UP_PLUS_Z = 2,
    TEV2_UP_MINUS_Z = 3
};
TEV2_PLAYBACK_API int32_t tev2_clip_up_axis(const tev2_clip* clip);

TEV2_PLAYBACK_API int32_t tev2_clip_camera_count(const tev2_clip* clip);

// As those of nodes.
TEV2_PLAYBACK_API const char* tev2_clip_camera_name(const tev2_clip* clip, int32_t camera);
TEV2_PLAYBACK_API int32_t tev2_clip_find_camera(const tev2_clip* clip, const char* name);

// The node that has the camera, or -1: it is placed in the world.
TEV2_PLAYBACK_API int32_t tev2_clip_camera_node(const tev2_clip* clip, int32_t camera);

enum // the values of a user property
{
    TEV2_PROPERTY_TEXTS = 0, // a list of texts, the same at all times
    TEV2_PROPERTY_INT = 1,
    TEV2_PROPERTY_FLOAT = 2,
    TEV2_PROPERTY_VECTOR3 = 3,
    TEV2_PROPERTY_VECTOR4 = 4
};

typedef struct tev2_property_info
{
    const char* name; // valid while the clip or one of its players lives
    int32_t type;
    int32_t of_camera; // 1: the owner is a camera; 0: a node
    int32_t owner;
    int32_t text_count; // of texts
} tev2_property_info;

// User properties of all nodes, then of all cameras.
TEV2_PLAYBACK_API int32_t tev2_clip_property_count(const tev2_clip* clip);
TEV2_PLAYBACK_API tev2_result tev2_clip_property_info(const tev2_clip* clip, int32_t property,
                                                      tev2_property_info* info);

// The first property of a node (of_camera 0) or camera (1) with that name and type, or -1.
TEV2_PLAYBACK_API int32_t tev2_clip_find_property(const tev2_clip* clip, int32_t of_camera, int32_t owner,
                                                  const char* name, int32_t type);

// Valid while the clip or one of its players lives. Null where there is no such text.
TEV2_PLAYBACK_API const char* tev2_clip_property_text(const tev2_clip* clip, int32_t property, int32_t text);

// ---- Players

// A player at the start of the clip's time range, at speed 1, that does not repeat. On failure it is null.
TEV2_PLAYBACK_API tev2_result tev2_player_create(const tev2_clip* clip, tev2_player** player);

// Another player of the same clip, in the same state. On failure it is null.
TEV2_PLAYBACK_API tev2_result tev2_player_copy(const tev2_player* player, tev2_player** copy);

// Null: nothing happens.
TEV2_PLAYBACK_API void tev2_player_destroy(tev2_player* player);

enum // what happens at the ends of the time range
{
    TEV2_REPEAT_ONCE = 0,     // stops there
    TEV2_REPEAT_LOOP = 1,     // jumps to the other end
    TEV2_REPEAT_PING_PONG = 2 // turns round
};
TEV2_PLAYBACK_API tev2_result tev2_player_set_repeat(tev2_player* player, int32_t repeat);

// Seconds of the clip per second; negative: backward. 0, or not finite: does not move.
TEV2_PLAYBACK_API void tev2_player_set_speed(tev2_player* player, double speed);

// Plays on by seconds times the speed, within the time range; negative seconds go back. Counts in double precision:
// pass 1.0 / 60.0, not a float.
TEV2_PLAYBACK_API void tev2_player_advance(tev2_player* player, double seconds);

// Goes to any time, inside the range or not; tracks hold their first and last values. A jump: no events.
TEV2_PLAYBACK_API void tev2_player_set_time(tev2_player* player, float seconds);

TEV2_PLAYBACK_API float tev2_player_time(const tev2_player* player);

// 1 when a player that does not repeat has arrived at the end to which its speed leads, else 0.
TEV2_PLAYBACK_API int32_t tev2_player_has_ended(const tev2_player* player);

// How often the last advance jumped or turned at an end.
TEV2_PLAYBACK_API uint64_t tev2_player_wraps(const tev2_player* player);

// From the axes of each node to the world, at the present time: tev2_clip_node_count of them. Valid until the time of
// the player changes or it is destroyed. The first call after a change of time computes them.
TEV2_PLAYBACK_API const tev2_matrix* tev2_player_world(tev2_player* player);

// ---- Cameras, properties and events of a player

typedef struct tev2_camera
{
    tev2_matrix world;   // from the axes of the camera to the world
    tev2_matrix view;    // from the world to the axes of the camera
    float distance;      // to what it looks at
    float field_of_view; // across the width of the picture
    float near_plane;
    float far_plane;
    float inverse_aspect; // height of the picture over its width
    int32_t right_handed; // 1: looks along its -Z, 0: along its +Z
} tev2_camera;

// A camera at the present time.
TEV2_PLAYBACK_API tev2_result tev2_player_camera(tev2_player* player, int32_t camera, tev2_camera* state);

// The camera that the switcher of the clip shows at the present time, or -1.
TEV2_PLAYBACK_API int32_t tev2_player_active_camera(const tev2_player* player);

enum // the depths of the near and the far plane
{
    TEV2_DEPTH_ZERO_TO_ONE = 0,
    TEV2_DEPTH_ONE_TO_ZERO = 1,
    TEV2_DEPTH_MINUS_ONE_TO_ONE = 2,
    TEV2_DEPTH_ONE_TO_MINUS_ONE = 3
};

// Four rows of four: from the axes of the camera to clip space, for columns (x, y, z, 1). `aspect` is the width of the
// viewport over its height; 0: that of the camera. The matrix is not finite where the lens is none: a field of view or
// an aspect of 0, equal planes.
TEV2_PLAYBACK_API tev2_result tev2_camera_projection(const tev2_camera* camera, int32_t depth, float aspect,
                                                     float projection[16]);

// A property at the present time; 0 for one of another type.
TEV2_PLAYBACK_API int32_t tev2_player_int(const tev2_player* player, int32_t property);

// Writes the 1, 3 or 4 numbers of a property of floats at the present time, and returns how many these are; 0 for one
// of another type.
TEV2_PLAYBACK_API int32_t tev2_player_floats(const tev2_player* player, int32_t property, float values[4]);

// What a property or the switcher did: a change from one key's value to another's. Whole numbers have i; others have as
// many of f as their type has components, and 0 in the rest.
typedef struct tev2_event
{
    float time;   // of the key, or of the end of the range that a loop jumped to
    int32_t type; // of the property; the switcher has whole numbers
    union
    {
        int32_t i;
        float f[4];
    } before, after;
} tev2_event;

// Called for one event after another in the order of play; returning 0 stops. Must not use the player.
typedef int32_t (*tev2_event_callback)(const tev2_event* event, void* user);

// The events of the last advance, by the rules of events.h: from the key value before it to the one after it, none
// missing, none twice. None after tev2_player_set_time. Returns how many callbacks there were.
TEV2_PLAYBACK_API uint64_t tev2_player_events(const tev2_player* player, int32_t property,
                                              tev2_event_callback callback, void* user);
TEV2_PLAYBACK_API uint64_t tev2_player_camera_cuts(const tev2_player* player, tev2_event_callback callback,
                                                   void* user);

// ---- Poses: arrays with a transform for each node relative to its parent, in the order of nodes. Masks are arrays
// with a factor for each node, by which the weight is multiplied; null: 1. Outputs may be the memory of inputs. pose.h
// has the formulas.

// The pose at the present time. Fails, and writes nothing, where `count` is less than the number of nodes.
TEV2_PLAYBACK_API tev2_result tev2_player_sample(tev2_player* player, tev2_transform* pose, int32_t count);

// Moves a pose towards another: by 0 not at all, by 1 onto it.
TEV2_PLAYBACK_API void tev2_pose_blend(tev2_transform* to, const tev2_transform* from, int32_t count,
                                       float weight, const float* mask);

// Adds what tev2_pose_difference gave.
TEV2_PLAYBACK_API void tev2_pose_add(tev2_transform* to, const tev2_transform* delta, int32_t count,
                                     float weight, const float* mask);

// What has to be added to a reference, with weight 1, to get the pose.
TEV2_PLAYBACK_API void tev2_pose_difference(const tev2_transform* pose, const tev2_transform* reference,
                                            tev2_transform* delta, int32_t count);

// Sets the factors of a node and of all nodes below it in a mask of `count` entries; others stay.
TEV2_PLAYBACK_API tev2_result tev2_clip_mask_below(const tev2_clip* clip, int32_t node, float factor,
                                                   float* mask, int32_t count);

// World matrices of a pose.
TEV2_PLAYBACK_API void tev2_clip_to_world(const tev2_clip* clip, const tev2_transform* pose,
                                          tev2_matrix* world, int32_t count);

// The palette of a skinned mesh: palette[i] = world[bones[i]] * bind[i], from bind space to the world. `bind` brings
// vertices to the axes of the bone, both in the frame of the clip; null: the identity. `world` is what
// tev2_player_world or tev2_clip_to_world gave, `nodes` how many matrices it has; a bone beyond them has the identity.
TEV2_PLAYBACK_API void tev2_form_palette(const tev2_matrix* world, int32_t nodes, const int32_t* bones,
                                         const tev2_matrix* bind, int32_t count, tev2_matrix* palette);

// ---- Root motion: how a node moves the character of one player, and poses without that movement. root_motion.h has
// the rules.

typedef struct tev2_root_motion tev2_root_motion;

// The first movement begins where the node is at the start of the clip's time range. Choose the topmost node that
// moves. The clip is not needed afterwards. On failure it is null.
TEV2_PLAYBACK_API tev2_result tev2_root_motion_create(const tev2_clip* clip, int32_t node,
                                                      tev2_root_motion** motion);

// Null: nothing happens.
TEV2_PLAYBACK_API void tev2_root_motion_destroy(tev2_root_motion* motion);

// The movement of the character from the last call, or restart, to this one, at which the node is as in the pose:
// earlier place * movement = later place, in the axes of the clip's world. Call it once after each tev2_player_advance;
// it goes on across the ends of loops. Movement, restart and hold fail where the pose does not have the node.
TEV2_PLAYBACK_API tev2_result tev2_root_motion_movement(tev2_root_motion* motion, const tev2_player* player,
                                                        const tev2_transform* pose, int32_t count,
                                                        tev2_transform* movement);

// The next movement begins where the node is in the pose. For use after tev2_player_set_time.
TEV2_PLAYBACK_API tev2_result tev2_root_motion_restart(tev2_root_motion* motion, const tev2_transform* pose,
                                                       int32_t count);

// Puts the node where it is at the start of the clip's time range.
TEV2_PLAYBACK_API tev2_result tev2_root_motion_hold(const tev2_root_motion* motion, tev2_transform* pose,
                                                    int32_t count);

#pragma once

// The headless host for other languages, with C linkage: opens a scene, says what is in it, chooses what is exported,
// and exports.
//
// A process has one scene, empty at first. A plug-in that is loaded into the process works on it, since both use the
// same libfbsdk.
//
// Text is 8-bit and zero terminated, in the encoding of the scene file (mostly UTF-8); paths are bytes as the system
// takes them. The caller owns all memory: text is copied to the caller's buffer of `size` bytes, truncated to fit and
// always terminated; a null buffer is left out.
//
// A function that can fail returns 1 on success and 0 on failure; an invalid index is a failure. No exception reaches
// the caller. Not thread-safe.

#include <stddef.h>
#include <stdint.h>

#if !defined(_WIN32)
#define MOBU_HOST_EXPORTED __attribute__((visibility("default")))
#elif defined(MOBU_HOST_EXPORTS)
#define MOBU_HOST_EXPORTED __declspec(dllexport)
#else
#define MOBU_HOST_EXPORTED __declspec(dllimport)
#endif

#if defined(__cplusplus)
#define MOBU_HOST_API extern "C" MOBU_HOST_EXPORTED
#else
#define MOBU_HOST_API MOBU_HOST_EXPORTED
#endif

// Empties the scene and opens a scene file into it. The take that was open when an FBX file was saved is then current,
// the first of other files, and nothing is selected. On success `text` receives what the file holds and the scene does
// not, or holds differently: lines that end in "\n", often none. On failure it receives one line with the file and the
// cause, and the scene is as it was.
MOBU_HOST_API int mobu_host_open_scene(const char* path, char* text, size_t size);

// The same at a given transport rate, in frames per second; 0: the file's.
MOBU_HOST_API int mobu_host_open_scene_at(const char* path, double frames_per_second, char* text,
                                          size_t size);

// The files that the scene was read from, the scene file first; none for a new scene.
MOBU_HOST_API int mobu_host_scene_file_count(void);
MOBU_HOST_API int mobu_host_scene_file(int file, char* path, size_t size);

// The rate of the frame numbers of a range, in frames per second.
MOBU_HOST_API double mobu_host_transport_rate(void);

// Empties the scene: one take "Take 001" of 0 to 0 s. Fails when memory runs out.
MOBU_HOST_API int mobu_host_new_scene(void);

// Takes are numbered from 0, in the order of the scene.
MOBU_HOST_API int mobu_host_take_count(void);

MOBU_HOST_API int mobu_host_take_name(int take, char* name, size_t size);

// In seconds.
MOBU_HOST_API int mobu_host_take_span(int take, double* start, double* stop);

// -1 when there is none.
MOBU_HOST_API int mobu_host_current_take(void);

MOBU_HOST_API int mobu_host_choose_take(int take);

// Adds the first model of this long name ("namespace:Hips") to the selection. Fails when there is none.
MOBU_HOST_API int mobu_host_select_model(const char* long_name);

// Nothing selected: the whole scene is exported.
MOBU_HOST_API void mobu_host_clear_selection(void);

// Models are numbered from 0 in pre-order, the root of the scene first, as of the last mobu_host_model_count; opening a
// scene invalidates the numbers.
typedef struct mobu_host_model
{
    int32_t parent; // number of the parent, -1 for the root
    int32_t selected;
    int32_t camera;
} mobu_host_model;
MOBU_HOST_API int mobu_host_model_count(void);

MOBU_HOST_API int mobu_host_model_at(int model, mobu_host_model* properties);
MOBU_HOST_API int mobu_host_model_name(int model, char* long_name, size_t size);

// For a name that no take or model has: ` (did you mean "Dance"?)`, to append to a message; empty when no name is
// close.
MOBU_HOST_API void mobu_host_suggest_take(const char* unknown, char* text, size_t size);
MOBU_HOST_API void mobu_host_suggest_model(const char* unknown, char* text, size_t size);

typedef struct mobu_host_export_call
{
    size_t size;        // of this structure
    const char* plugin; // path of the exporter's module
    const char* path;   // of the file, or the pattern of several
    double
        rate; // samples per second; a fractional rate goes through the plug-in's dialog, filled in in memory
    int32_t whole_take;
    int32_t start_frame; // of the transport rate; ignored for the whole take
    int32_t end_frame;
    int32_t spaces_to_underscores;
    int32_t keep_positive_z;
    int32_t remove_namespace;
    int32_t disable_constraints;
    int32_t all_takes;
} mobu_host_export_call;

// Callback during sampling, at most every 50 ms, with the take's number and the time in it; return 0 to stop the
// export.
typedef int (*mobu_host_progress)(int take, double seconds, void* user);

// Loads the plug-in, exports the open scene and unloads the plug-in. The user's stored settings are neither read nor
// changed. Returns 1 when the plug-in completed the run; 0 when it did not, with the cause in `text` where it is known;
// -1 when the callback stopped it: files not yet written stay as they are, and the scene is restored. The export rules
// are not checked here: see exporter/rules/export_rules.h.
MOBU_HOST_API int mobu_host_export(const mobu_host_export_call* call, mobu_host_progress progress, void* user,
                                   char* text, size_t size);

#pragma once

// The headless host for other languages, with C linkage: opens a scene and chooses what an export takes of it.
//
// There is one scene in a process. A plug-in that is loaded into the same process works on it, since both stand on the
// same libfbsdk. An empty scene is there from the start.
//
// Text is 8-bit and zero terminated, in the encoding of the scene file (mostly UTF-8); paths are bytes as the system
// takes them. The caller owns all memory: text that is handed out goes into the caller's buffer of `size` bytes, cut
// to fit and always terminated; a null buffer takes nothing.
//
// A function that can fail returns 1 when it succeeded and 0 when not. Nothing is ever thrown into the caller. Nothing
// is safe to call from two threads at a time.

#include <stddef.h>

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

// Empties the scene and opens the file (FBX, BVH, glTF, Collada) into it. The take that was open when an FBX file was
// saved is then current, the first of other files, and nothing is selected. On success `text` receives what the file
// holds and the scene does not, or holds differently: lines that end in "\n", often none. On failure it receives one
// line with the file and the cause, and the scene is as it was.
MOBU_HOST_API int mobu_host_open_scene(const char* path, char* text, size_t size);

// Empties the scene: one take "Take 001" of 0 to 0 s. Fails when memory runs out.
MOBU_HOST_API int mobu_host_new_scene(void);

// Takes are numbered from 0, in the order of the scene.
MOBU_HOST_API int mobu_host_take_count(void);

// Fails for a number that no take has.
MOBU_HOST_API int mobu_host_take_name(int take, char* name, size_t size);

// The number of the current take, -1 when there is none.
MOBU_HOST_API int mobu_host_current_take(void);

// Makes the take current. Fails for a number that no take has.
MOBU_HOST_API int mobu_host_choose_take(int take);

// Selects the first model of this long name ("namespace:Hips"), besides what is selected already. Fails when there is
// none.
MOBU_HOST_API int mobu_host_select_model(const char* long_name);

// Selects nothing, which stands for the whole scene.
MOBU_HOST_API void mobu_host_clear_selection(void);

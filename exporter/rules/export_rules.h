#pragma once

// The rules of exports with C linkage, for programs in other languages: what an export would write, and the first
// reason not to start it. Writes nothing and opens no file for writing.
//
//     tv2_rules_request request = {sizeof request};
//     request.path = "out/walk.tv2";
//     ...
//     tv2_rules_plan* plan = tv2_rules_check(&request);
//     if (tv2_rules_result_of(plan).objection)
//         puts(tv2_rules_result_of(plan).objection);
//     tv2_rules_free(plan);
//
// Text is 8-bit and zero terminated; paths and names of takes are the bytes that the exporter is given. Nothing is
// thrown into the caller.

#include <stddef.h>
#include <stdint.h>

#if defined(TV2_RULES_STATIC)
#define TV2_RULES_EXPORTED
#elif !defined(_WIN32)
#define TV2_RULES_EXPORTED __attribute__((visibility("default")))
#elif defined(TV2_RULES_EXPORTS)
#define TV2_RULES_EXPORTED __declspec(dllexport)
#else
#define TV2_RULES_EXPORTED __declspec(dllimport)
#endif

#if defined(__cplusplus)
#define TV2_RULES_API extern "C" TV2_RULES_EXPORTED
#else
#define TV2_RULES_API TV2_RULES_EXPORTED
#endif

typedef struct tv2_rules_take
{
    const char* name;
    double start; // seconds
    double stop;
} tv2_rules_take;

// Models in pre-order, the scene's root first.
typedef struct tv2_rules_model
{
    int32_t parent; // index of the parent, -1 for the root
    int32_t selected;
    int32_t camera;
} tv2_rules_model;

typedef struct tv2_rules_request
{
    size_t size;      // of this structure
    const char* path; // as the exporter is given it
    const char*
        rate; // "50", "29.97", "30000/1001", "pal", "ntsc", "film"; null or "scene": the transport rate
    const int32_t* start_frame; // of the transport rate; null: the take's own end
    const int32_t* end_frame;
    int32_t all_takes;
    int32_t spaces_to_underscores;
    int32_t whole_rates_only; // the exporter can only be reached through its script entry
    int32_t python_wording; // messages name options as Python's arguments, otherwise as the command's options
    int32_t file_names;     // 0: of this system, 1: POSIX, 2: Windows
    int32_t has_scene;      // 0: the rest is not known yet; only the rules that need no scene apply
    double transport_rate;  // frames a second
    const tv2_rules_take* takes;
    size_t take_count;
    int32_t current_take; // index, -1: none
    const tv2_rules_model* models;
    size_t model_count;
    const char* const* files; // the scene was read from, the scene file first
    size_t file_count;
} tv2_rules_request;

typedef struct tv2_rules_file
{
    const char* path;
    size_t take;  // index in the request
    double start; // seconds, single precision
    double end;
} tv2_rules_file;

typedef struct tv2_rules_plan tv2_rules_plan;

// Applies the rules. Null when memory runs out or the size of the request is wrong.
TV2_RULES_API tv2_rules_plan* tv2_rules_check(const tv2_rules_request* request);
TV2_RULES_API void tv2_rules_free(tv2_rules_plan* plan);

// What a plan says. The plan owns the texts.
typedef struct tv2_rules_result
{
    const char*
        objection;    // why the export is refused, for people; null: it can start, and the rest is complete
    const char* code; // of the rule that refuses it; never changes ("same-file")
    double rate;      // samples per second, as asked for
    const char*
        path; // as the headless host passes it to the exporter: absolute, so that the file records where it
              // is, unless names would become too long
    int32_t start_frame; // arguments of the exporter's script entry
    int32_t end_frame;
    int32_t whole_take;
    size_t file_count;
    size_t note_count;
} tv2_rules_result;
TV2_RULES_API tv2_rules_result tv2_rules_result_of(const tv2_rules_plan* plan);

// File and note number `index`; a file without a path and null when there is none.
TV2_RULES_API tv2_rules_file tv2_rules_file_at(const tv2_rules_plan* plan, size_t index);
TV2_RULES_API const char* tv2_rules_note(const tv2_rules_plan* plan, size_t index);

// The whole transport frame of a time in seconds, as the exporter counts.
TV2_RULES_API int32_t tv2_rules_frame_at(double seconds, double transport_rate);

// The options of an export, each with the name of its argument in Python.
typedef struct tv2_rules_option
{
    const char* name;
    const char* help;   // null: only the dialog has it
    int32_t is_flag;    // on or off; otherwise a value
    int32_t default_on; // of a flag
} tv2_rules_option;

TV2_RULES_API size_t tv2_rules_option_count(void);
TV2_RULES_API tv2_rules_option tv2_rules_option_at(size_t index);

// The name of the exporter's script entry.
TV2_RULES_API const char* tv2_rules_script_entry(void);

/* Plays a scene file once in steps of a tenth of a second and prints where one node is in the world. C99.

       play_c FILE.tv2 [NODE] */

#include "tev2_playback/tev2_playback.h"

#include <stdio.h>
#include <stdlib.h>

static int32_t print_event(const tev2_event* event, void* name)
{
    printf("  %s at %.2f s: %d, was %d\n", (const char*)name, (double)event->time, (int)event->after.i,
           (int)event->before.i);
    return 1; /* go on */
}

static void play(const tev2_clip* clip, tev2_player* player, int32_t node)
{
    int32_t property;
    tev2_player_set_repeat(player, TEV2_REPEAT_ONCE);
    while (!tev2_player_has_ended(player))
    {
        const tev2_matrix* world = tev2_player_world(player); /* of every node */
        printf("%.2f s: %g %g %g m\n", (double)tev2_player_time(player), (double)world[node].m[0][3],
               (double)world[node].m[1][3], (double)world[node].m[2][3]);
        tev2_player_advance(player, 0.1);
        for (property = 0; property < tev2_clip_property_count(clip); ++property)
        {
            tev2_property_info info;
            tev2_clip_property_info(clip, property, &info);
            if (info.type == TEV2_PROPERTY_INT)
                tev2_player_events(player, property, print_event, (void*)info.name);
        }
    }
}

int main(int argc, char** argv)
{
    char reason[512];
    tev2_clip* clip;
    tev2_player* player;
    int32_t node = 0;
    if (argc < 2)
    {
        fprintf(stderr, "usage: play_c FILE.tv2 [NODE]\n");
        return 2;
    }
    if (tev2_playback_abi_version() != TEV2_PLAYBACK_ABI_VERSION)
    {
        fprintf(stderr, "the library is of another version than this program\n");
        return 2;
    }
    if (tev2_clip_load(argv[1], NULL, &clip, reason, sizeof reason) != TEV2_OK)
    {
        fprintf(stderr, "%s\n", reason);
        return 1;
    }
    printf("%d nodes, %zu bytes\n", (int)tev2_clip_node_count(clip), tev2_clip_size(clip));
    if (argc > 2)
        node = tev2_clip_find_node(clip, argv[2]);
    if (node < 0 || node >= tev2_clip_node_count(clip))
    {
        fprintf(stderr, "%s: no such node\n", argv[1]);
        tev2_clip_destroy(clip);
        return 1;
    }
    if (tev2_player_create(clip, &player) != TEV2_OK)
    {
        fprintf(stderr, "out of memory\n");
        tev2_clip_destroy(clip);
        return 1;
    }
    play(clip, player, node);
    tev2_player_destroy(player);
    tev2_clip_destroy(clip);
    return 0;
}

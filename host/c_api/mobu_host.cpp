#include "host/c_api/mobu_host.h"

#include "host/scene_import/scene_import.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <exception>
#include <string>
#include <string_view>

namespace
{

void CopyText(std::string_view from, char* to, std::size_t size)
{
    if (!to || size == 0)
        return;
    const std::size_t length = std::min(from.size(), size - 1);
    from.copy(to, length);
    to[length] = '\0';
}

FBTake* TakeAt(int take)
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    return take >= 0 && take < takes.GetCount() ? takes[take] : nullptr;
}

// What the function returns, or `failed` when it threw.
template <class Function>
int Guarded(int failed, Function function) noexcept
{
    try
    {
        return function();
    }
    catch (...)
    {
        return failed;
    }
}

} // namespace

int mobu_host_open_scene(const char* path, char* text, std::size_t size)
{
    try
    {
        const mobu_host::SceneImportResult result = mobu_host::ImportScene(path ? path : "");
        std::string told = result.error;
        for (const std::string& note : result.notes)
            told += result.ok ? note + '\n' : "";
        CopyText(told, text, size);
        return result.ok;
    }
    catch (const std::exception& error)
    {
        CopyText(error.what(), text, size);
        return 0;
    }
    catch (...)
    {
        CopyText("the scene cannot be opened", text, size);
        return 0;
    }
}

int mobu_host_new_scene()
{
    return Guarded(0,
                   []
                   {
                       mobu_host::NewScene();
                       return 1;
                   });
}

int mobu_host_take_count()
{
    return Guarded(0, [] { return mobu_host::Scene().Takes.GetCount(); });
}

int mobu_host_take_name(int take, char* name, std::size_t size)
{
    return Guarded(0,
                   [=]
                   {
                       FBTake* const found = TakeAt(take);
                       if (found)
                           CopyText(static_cast<const char*>(found->Name), name, size);
                       return found != nullptr;
                   });
}

int mobu_host_current_take()
{
    return Guarded(-1,
                   []
                   {
                       FBTake* const current = FBSystem().CurrentTake;
                       int take = mobu_host::Scene().Takes.GetCount() - 1;
                       while (take >= 0 && TakeAt(take) != current)
                           --take;
                       return take;
                   });
}

int mobu_host_choose_take(int take)
{
    return Guarded(0,
                   [=]
                   {
                       FBTake* const found = TakeAt(take);
                       if (found)
                           FBSystem().CurrentTake = found;
                       return found != nullptr;
                   });
}

int mobu_host_select_model(const char* long_name)
{
    return Guarded(0,
                   [=]
                   {
                       for (FBModel* model : mobu_host::ModelsInPreOrder())
                           if (long_name &&
                               std::string_view(static_cast<const char*>(model->LongName)) == long_name)
                           {
                               model->Selected = true;
                               return 1;
                           }
                       return 0;
                   });
}

void mobu_host_clear_selection()
{
    Guarded(0,
            []
            {
                for (FBModel* model : mobu_host::ModelsInPreOrder())
                    model->Selected = false;
                return 1;
            });
}

#include "platform/linux/GioInstalledApplications.h"

#include "storage/Text.h"

#include <gio/gdesktopappinfo.h>

#include <memory>

namespace letterloft {

namespace {

std::string iconOf(GAppInfo* info) {
    GIcon* const icon = g_app_info_get_icon(info);
    const std::unique_ptr<char, decltype(&g_free)> text{icon ? g_icon_to_string(icon) : nullptr, g_free};
    return text ? text.get() : std::string{};
}

void append(std::vector<InstalledApplications::Application>& applications, GAppInfo* info) {
    if (!G_IS_DESKTOP_APP_INFO(info) || !g_app_info_should_show(info)) return;
    const char* const file = g_desktop_app_info_get_filename(G_DESKTOP_APP_INFO(info));
    const char* const name = g_app_info_get_display_name(info);
    if (!file || !name || !isUtf8(file)) return;
    applications.push_back({name, iconOf(info), file});
}

} // namespace

std::vector<InstalledApplications::Application> GioInstalledApplications::all() const {
    std::vector<Application> applications;
    GList* const infos = g_app_info_get_all();
    for (GList* link = infos; link; link = link->next)
        append(applications, G_APP_INFO(link->data));
    g_list_free_full(infos, g_object_unref);
    return applications;
}

} // namespace letterloft

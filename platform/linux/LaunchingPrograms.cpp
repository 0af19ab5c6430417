#include "platform/linux/LaunchingPrograms.h"

#include "storage/SupportFolder.h"

#include <algorithm>
#include <array>

namespace letterloft {

namespace {

// Lists of names, in which a name stands between blanks.
bool holds(std::string_view names, std::string_view name) {
    if (name.empty() || name.find(' ') != std::string_view::npos) return false;
    return names.find(" " + std::string{name} + " ") != std::string_view::npos;
}

struct Prefix {
    std::string_view names;
    std::size_t operands = 0;        // before the program
    std::string_view withValue = {}; // options whose value stands in an argument of its own
    std::string_view withTwoValues = {};
};

constexpr std::array prefixes{
    Prefix{" nohup setsid command dbus-launch systemd-inhibit xdg-terminal-exec firejail catchsegv mangohud prime-run "
           "gamemoderun primusrun optirun torify padsp "},
    Prefix{" torsocks ", 0, " -u -p -P -a --user --pass --port --address "},
    Prefix{" proxychains proxychains4 ", 0, " -f "},
    Prefix{" systemd-cat ", 0, " -t -p --identifier --priority "},
    Prefix{" env ", 0, " -u --unset -C --chdir -S --split-string "},
    Prefix{" nice choom ", 0, " -n --adjustment --adjust "},
    Prefix{" ionice ", 0, " -c -n --class --classdata "},
    Prefix{" stdbuf ", 0, " -i -o -e "},
    Prefix{" setarch taskset chrt faketime ", 1},
    Prefix{" timeout ", 1, " -k -s "},
    Prefix{" uwsm ", 1, " -s -a -t -u -D "},
    Prefix{" switcherooctl ", 1, " -g --gpu "},
    Prefix{" dbus-run-session ", 0, " --config-file --dbus-daemon "},
    Prefix{" xvfb-run ", 0, " -n -s -e -f -p -w "},
    Prefix{" pkexec ", 0, " --user "},
    Prefix{" systemd-run ", 0,
           " -p --property -u --unit -E --setenv --slice -H --host -M --machine --description --working-directory "
           "--uid --gid --nice --service-type "},
    Prefix{" bwrap ", 0,
           " --args --argv0 --userns --userns2 --pidns --uid --gid --hostname --chdir --unsetenv --lock-file --sync-fd "
           "--remount-ro --exec-label --file-label --proc --dev --tmpfs --mqueue --dir --seccomp --info-fd --block-fd "
           "--userns-block-fd --json-status-fd --add-seccomp-fd --cap-add --cap-drop --perms --size ",
           " --setenv --bind --bind-try --dev-bind --dev-bind-try --ro-bind --ro-bind-try --file --bind-data "
           "--ro-bind-data --symlink --chmod "},
};

constexpr std::string_view terminals =
    " x-terminal-emulator xterm uxterm lxterm rxvt urxvt mlterm st gnome-terminal gnome-terminal.wrapper kgx ptyxis "
    "mate-terminal mate-terminal.wrapper xfce4-terminal xfce4-terminal.wrapper lxterminal konsole qterminal terminator "
    "terminology tilix tilix.wrapper sakura kitty alacritty foot footclient wezterm cool-retro-term ";

constexpr std::string_view bystanders =
    " [ test echo printf set shift getopt getopts eval export local return exit cd . source trap case for cat sed awk "
    "grep logger man less more sleep wait kill rm mv cp ln mkdir touch chmod tee true false read ulimit umask unset "
    "gdb lldb strace ltrace valgrind zenity kdialog yad xmessage notify-send dirname basename readlink realpath "
    "xdg-open xset xrdb dbus-send gdbus gsettings sensible-browser x-www-browser systemctl id uname which locale ";

bool isAssignment(const std::string& word) {
    const auto equals = word.find('=');
    return equals != std::string::npos && equals > 0 && word.front() != '-' && word.find('/') > equals;
}

} // namespace

std::optional<std::span<const std::string>> wordsAfterPrefix(std::span<const std::string> words) {
    const std::string name = lastComponent(words.front());
    const auto* const prefix =
        std::find_if(prefixes.begin(), prefixes.end(), [&](const Prefix& one) { return holds(one.names, name); });
    if (prefix == prefixes.end()) return std::nullopt;
    std::size_t operands = prefix->operands;
    std::size_t i = 1;
    for (; i < words.size(); ++i) {
        if (words[i] == "--") return words.subspan(i + 1);
        if (holds(prefix->withValue, words[i]))
            ++i;
        else if (holds(prefix->withTwoValues, words[i]))
            i += 2;
        else if (words[i].starts_with('-') || isAssignment(words[i]))
            continue;
        else if (operands-- == 0)
            break;
    }
    return words.subspan(std::min(i, words.size()));
}

bool isTerminal(std::string_view path) { return holds(terminals, path.substr(path.rfind('/') + 1)); }

bool isBystander(std::string_view name) { return holds(bystanders, name); }

} // namespace letterloft

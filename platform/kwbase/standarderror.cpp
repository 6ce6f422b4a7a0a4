#include "kwbase/standarderror.h"

#include "kwbase/standardstream.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds AT_ONCE{0};

std::mutex mutex;
std::size_t lostCount = 0; // lines

StandardStream& Stream() {
    static StandardStream stream(STDERR_FILENO);
    return stream;
}

std::string DescribeLoss() {
    return lostCount == 0   ? std::string()
           : lostCount == 1 ? "1 line of messages was lost\n"
                            : std::to_string(lostCount) + " lines of messages were lost\n";
}

/// With the notice of what was lost in front, in one piece: a reader that takes little still takes both.
void WriteWithNotice(std::string_view lines) {
    const std::string notice = DescribeLoss();
    const std::size_t taken = Stream().Write(notice + std::string(lines), AT_ONCE);
    if (taken >= notice.size()) {
        lostCount = 0;
        lines.remove_prefix(taken - notice.size());
    }
    lostCount += static_cast<std::size_t>(std::count(lines.begin(), lines.end(), '\n'));
}

} // namespace

namespace StandardError {

void Write(std::string_view lines) {
    const std::lock_guard lock(mutex);
    WriteWithNotice(lines);
}

void Draw(std::string_view text) {
    const std::lock_guard lock(mutex);
    Stream().Write(text, AT_ONCE);
}

void TellLoss() {
    const std::lock_guard lock(mutex);
    WriteWithNotice({});
}

} // namespace StandardError

/// Two threads use the same memory without a lock, in the manner that the argument names: "write",
/// "copy" or "delete". The thread sanitizer has to report each.

#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

int main(int count, char **arguments)
{
    const std::string_view manner = count > 1 ? arguments[1] : "";
    const auto size = static_cast<size_t>(64 * count); // not known to the compiler
    const std::vector<char> source(size, 'x');
    std::vector<char> target(size);
    auto number = std::make_unique<int>(count);
    int sum = 0;
    // Orders the threads, but promises nothing about their memory.
    std::atomic<bool> isUsed = false;

    std::thread other([&, used = number.get()] {
        if (manner == "write")
            sum += count;
        else if (manner == "copy")
            std::memcpy(target.data(), source.data(), size);
        else
            *used += count;
        isUsed.store(true, std::memory_order_relaxed);
    });
    while (!isUsed.load(std::memory_order_relaxed))
        std::this_thread::yield();
    if (manner == "write")
        sum += count;
    else if (manner == "copy")
        std::memcpy(target.data(), source.data(), size);
    else
        number.reset();
    other.join();
    return sum == 0 && target.empty() ? 1 : 0;
}

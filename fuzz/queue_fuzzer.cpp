// The queue of bytes against a plain one.
#include <algorithm>
#include <cstdlib>
#include <deque>
#include <vector>

#include "BaseTools/data_buffer.h"
#include "tests/support/input_bytes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    test::InputBytes input(data, size);
    BaseTool::CDataBuffer2 queue(input.Take<uint8_t>() % 2);
    std::deque<uint8_t> model;
    while (!input.Empty()) {
        const auto operation = input.Take<uint8_t>();
        std::vector<uint8_t> bytes(input.TakeWithin(0, operation & 0x80 ? 5000 : 20));
        switch (operation % 8) {
        case 0:
        case 1:
            input.Spread(bytes.data(), bytes.size());
            queue.Push(bytes.data(), bytes.size());
            model.insert(model.end(), bytes.begin(), bytes.end());
            break;
        case 2:
            input.Spread(bytes.data(), bytes.size());
            queue.PushFront(bytes.data(), bytes.size());
            model.insert(model.begin(), bytes.begin(), bytes.end());
            break;
        case 3:
            queue.Push(nullptr, bytes.size());
            queue.PushFront(nullptr, bytes.size());
            break;
        case 4:
            queue.Clear();
            model.clear();
            break;
        default: {
            const bool discards = operation % 8 == 5;
            const size_t count = queue.Pop(discards ? nullptr : bytes.data(), bytes.size());
            if (count != std::min(bytes.size(), model.size())) std::abort();
            const auto end = model.begin() + static_cast<ptrdiff_t>(count);
            if (!discards && !std::equal(model.begin(), end, bytes.begin())) std::abort();
            model.erase(model.begin(), end);
        }
        }
        if (queue.GetDataSize() != model.size()) std::abort();
    }
    return 0;
}

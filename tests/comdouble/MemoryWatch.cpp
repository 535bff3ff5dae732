#include "tests/comdouble/MemoryWatch.h"

#include <mutex>
#include <set>
#include <stdexcept>

#include "win32/SystemHeaders.h"

// The library exports it, but no header declares it.
extern "C" void SetOaNoCache();

namespace comdouble {

namespace {

std::mutex guard;
bool isWatching = false;
std::set<void*> live;
std::set<void*> allocated;  ///< allocated since the watch began
std::size_t freedTwice = 0;

/// COM calls it before and after everything the allocator does. It stays registered, because COM does not release it
/// before the last block made under it is freed.
class Spy final : public IMallocSpy {
public:
    Spy() {
        SetOaNoCache();  // otherwise freed texts would be kept for later use
        if (FAILED(CoRegisterMallocSpy(this))) throw std::runtime_error("the allocator cannot be watched");
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const bool known = id == IID_IUnknown || id == IID_IMallocSpy;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        const std::scoped_lock lock(guard);
        if (!isWatching || block == nullptr) return block;
        live.insert(block);
        allocated.insert(block);
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL /*wasSpied*/) override {
        const std::scoped_lock lock(guard);
        if (live.erase(block) != 0 || !allocated.contains(block))
            return block;  // other blocks are older than the watch
        ++freedTwice;
        return nullptr;
    }
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T sizeBytes, void** actual, BOOL /*wasSpied*/) override {
        const std::scoped_lock lock(guard);
        live.erase(block);
        *actual = block;
        return sizeBytes;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL /*wasSpied*/) override { return PostAlloc(block); }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T sizeBytes) override { return sizeBytes; }
    void STDMETHODCALLTYPE PostFree(BOOL /*wasSpied*/) override {}
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL /*wasSpied*/) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T sizeBytes, BOOL /*wasSpied*/) override { return sizeBytes; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL /*wasSpied*/) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void* /*block*/, BOOL /*wasSpied*/, int answer) override { return answer; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}
};

}  // namespace

MemoryWatch::MemoryWatch() {
    static Spy only;
    const std::scoped_lock lock(guard);
    live.clear();
    allocated.clear();
    freedTwice = 0;
    isWatching = true;
}

MemoryWatch::~MemoryWatch() {
    const std::scoped_lock lock(guard);
    isWatching = false;
    allocated.clear();
}

std::size_t MemoryWatch::notFreed() const {
    const std::scoped_lock lock(guard);
    return live.size();
}

std::size_t MemoryWatch::freedAgain() const {
    const std::scoped_lock lock(guard);
    return freedTwice;
}

}  // namespace comdouble

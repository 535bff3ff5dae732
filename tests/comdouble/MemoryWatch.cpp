#include "tests/comdouble/MemoryWatch.h"

#include <mutex>
#include <set>
#include <stdexcept>
#include <utility>

#include "win32/SystemHeaders.h"

// The library exports it, but no header declares it.
extern "C" void SetOaNoCache();

namespace comdouble {

namespace {

/// COM calls it before and after everything the allocator does. It stays registered, because COM does not release it
/// before the last block made under it is freed.
class Spy final : public IMallocSpy, public MemoryWatch {
public:
    Spy() {
        SetOaNoCache();  // otherwise freed texts would be kept for later use
        if (FAILED(CoRegisterMallocSpy(this))) throw std::runtime_error("the allocator cannot be watched");
    }

    void begin() override {
        const std::scoped_lock lock(mutex_);
        live_.clear();
        freedAgain_ = 0;
        isWatching_ = true;
    }
    void end() override {
        std::set<void*> freed;
        {
            const std::scoped_lock lock(mutex_);
            isWatching_ = false;
            std::swap(freed, freed_);
        }
        for (void* block : freed)
            CoTaskMemFree(block);
    }
    std::size_t notFreed() const override {
        const std::scoped_lock lock(mutex_);
        return live_.size();
    }
    std::size_t freedAgain() const override {
        const std::scoped_lock lock(mutex_);
        return freedAgain_;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        const bool known = id == IID_IUnknown || id == IID_IMallocSpy;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        const std::scoped_lock lock(mutex_);
        if (isWatching_ && block != nullptr) live_.insert(block);
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL /*wasSpied*/) override {
        const std::scoped_lock lock(mutex_);
        if (!isWatching_) return block;
        if (live_.erase(block) == 0 && !freed_.contains(block)) return block;  // the block is older than the watch
        if (!freed_.insert(block).second) ++freedAgain_;
        return nullptr;
    }
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T sizeBytes, void** actual, BOOL /*wasSpied*/) override {
        const std::scoped_lock lock(mutex_);
        live_.erase(block);
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

private:
    mutable std::mutex mutex_;
    bool isWatching_ = false;
    std::set<void*> live_;
    std::set<void*> freed_;
    std::size_t freedAgain_ = 0;
};

}  // namespace

MemoryWatch& memoryWatch() {
    static Spy only;
    return only;
}

}  // namespace comdouble

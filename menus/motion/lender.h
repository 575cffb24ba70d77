// Lends an object of a menu to callbacks that the library runs on a thread of its own.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>

// To be declared behind its object, and so destroyed before it: the destruction waits for a callback that runs, and
// from then on callbacks do nothing. The object is destroyed by the menu's thread, in the menu's order.
template <typename Object>
class lender {
public:
    explicit lender(Object& object) : loan_(std::make_shared<loan>()) { loan_->object = &object; }
    lender(lender const&) = delete;
    lender& operator=(lender const&) = delete;
    ~lender() {
        std::lock_guard<std::shared_mutex> const lock(loan_->mutex);
        loan_->object = nullptr;
    }

    // Hands the object to `use` whenever it is called, from any thread, also from several at once: a library may wait
    // in one callback for another. May outlive the lender.
    template <typename Use>
    std::function<void()> callback(Use use) const {
        return [lent = loan_, use] {
            std::shared_lock<std::shared_mutex> const lock(lent->mutex);
            if (lent->object != nullptr) {
                use(*lent->object);
            }
        };
    }

private:
    struct loan {
        std::shared_mutex mutex;
        Object* object = nullptr;
    };
    std::shared_ptr<loan> loan_;
};

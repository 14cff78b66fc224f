#include "platform/StoreMaterial.h"
#include "store/StoreHandle.h"
#include "support/TemporaryFolder.h"
#include "values/Exceptions.h"

#include <cstdlib>
#include <vector>

namespace norvane::testing {
namespace {

// The configuration of this program: Root and CA are empty.
class Configured : public ::testing::Environment {
  public:
    Configured() {
        const std::string text = "[stores]\nRoot = " + folder_.path().string() + "/Root\n" +
                                 "CA = " + folder_.path().string() + "/CA\n";
        setenv("NORVANE_CONFIG", folder_.write("norvane.conf", text).c_str(), 1);
    }

  private:
    TemporaryFolder folder_;
};
const auto* const registered = ::testing::AddGlobalTestEnvironment(new Configured);

template <class Exception, class Operation>
std::string message_of(Operation operation) {
    try {
        operation();
    } catch (const Exception& error) {
        EXPECT_EQ(error.file(), source_module::store_util);
        return error.what();
    }
    ADD_FAILURE() << "no exception";
    return {};
}

bool contains(const std::string& text, const char* part) { return text.find(part) != text.npos; }

TEST(StoreHandle, RefusesNullAndWhatIsNoStore) {
    const StoreHandle empty;
    const char* const null_text = "'Store handle is NULL.'";
    EXPECT_TRUE(contains(message_of<CAException>([] { StoreHandle(nullptr); }), null_text));
    EXPECT_TRUE(contains(message_of<CAException>([&] { StoreHandle copy(empty); }), null_text));
    HCERTSTORE closed = OpenStore::memory().get();
    message_of<CryptException>([=] { StoreHandle handle(closed); });
}

TEST(StoreHandle, OwnsOneReferenceAndLeavesTheSourceUsable) {
    HCERTSTORE handle = nullptr;
    {
        const OpenStore memory = OpenStore::memory();
        handle = memory.get();
        const StoreHandle owner(handle);
        { const StoreHandle copy(owner); }
        EXPECT_TRUE(memory.add(certificate("A")));
        EXPECT_FALSE(owner.is_root());
    }
    EXPECT_FALSE(CertCloseStore(handle, 0));
}

TEST(StoreHandle, MarksOnlyTheStoreOfExactlyThatNameAsRoot) {
    const struct {
        LPCWSTR name;
        bool opened;
        bool is_root;
    } cases[] = {{NORVANE_W("Root"), true, true},
                 {NORVANE_W("ROOT"), true, false},
                 {NORVANE_W("CA"), true, false},
                 {NORVANE_W("Root2"), false, false}};
    for (const auto& item : cases) {
        StoreHandle store;
        EXPECT_EQ(open_system_store(store, item.name, system_store_flags), item.opened);
        EXPECT_EQ(store.handle() != nullptr, item.opened);
        EXPECT_EQ(store.is_root(), item.is_root);
        if (item.opened) {
            EXPECT_EQ(StoreHandle(store).is_root(), item.is_root);
            EXPECT_TRUE(contains(message_of<CAException>([&] {
                                     static_cast<void>(
                                         open_system_store(store, item.name, 0x1C000));
                                 }),
                                 "'Store already opened.'"));
            EXPECT_EQ(store.is_root(), item.is_root);
        }
    }
    EXPECT_EQ(system_store_flags, 0x1C000U);
}

TEST(StoreHandle, StandsInSetsWithRootFirstThenTheLastOpened) {
    const OpenStore first = OpenStore::memory();
    StoreHandle root;
    ASSERT_TRUE(open_system_store(root, NORVANE_W("Root"), system_store_flags));
    const OpenStore last = OpenStore::memory();
    StoreHandleSet stores;
    for (HCERTSTORE handle : {first.get(), last.get(), root.handle(), first.get()})
        stores.emplace(handle);
    stores.insert(root);
    stores.insert(root);
    std::vector<HCERTSTORE> order;
    for (const StoreHandle& store : stores)
        order.push_back(store.handle());
    // The opened Root store stands there twice, since its bare handle bears no mark.
    EXPECT_EQ(order, (std::vector{root.handle(), last.get(), root.handle(), first.get()}));
    EXPECT_TRUE(stores.begin()->is_root());
}

} // namespace
} // namespace norvane::testing

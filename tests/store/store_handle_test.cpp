#include "platform/StoreMaterial.h"
#include "store/StoreHandle.h"
#include "support/TemporaryFolder.h"
#include "values/ErrorOf.h"
#include "values/Exceptions.h"

#include <cstdlib>
#include <vector>

namespace norvane::testing {
namespace {

// The configuration of this program: Root is empty.
class Configured : public ::testing::Environment {
  public:
    Configured() {
        const std::string text = "[stores]\nRoot = " + folder_.path().string() + "/Root\n";
        setenv("NORVANE_CONFIG", folder_.write("norvane.conf", text).c_str(), 1);
    }

  private:
    TemporaryFolder folder_;
};
const auto* const registered = ::testing::AddGlobalTestEnvironment(new Configured);

TEST(StoreHandle, RefusesNullAndWhatIsNoStore) {
    const Error null{"CAException", "Store handle is NULL.",
                     std::string(source_module::store_util)};
    EXPECT_EQ(error_of([] { return StoreHandle(nullptr).is_root(); }), null);
    HCERTSTORE closed = OpenStore::memory().get();
    EXPECT_THROW(StoreHandle{closed}, CryptException);
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
    const Error open{"CAException", "Store already opened.",
                     std::string(source_module::store_util)};
    for (const auto& [name, is_root] :
         {std::pair(NORVANE_W("Root"), true), {NORVANE_W("ROOT"), false}}) {
        StoreHandle store;
        EXPECT_TRUE(open_system_store(store, name, system_store_flags));
        EXPECT_EQ(StoreHandle(store).is_root(), is_root);
        EXPECT_EQ(error_of([&, name = name] { return open_system_store(store, name, 0x1C000); }),
                  open);
        EXPECT_EQ(store.is_root(), is_root);
    }
    StoreHandle absent;
    EXPECT_FALSE(open_system_store(absent, NORVANE_W("Root2"), system_store_flags));
    EXPECT_EQ(absent.handle(), nullptr);
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

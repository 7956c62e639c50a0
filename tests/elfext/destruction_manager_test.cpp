// Destruction of objects that live in a region.
#include "elfext/interface/destruction_manager.h"

#include "tests/elfext/container_fixtures.h"

#include <memory>
#include <new>
#include <vector>

namespace elfext::test {
namespace {

using DestructionManagerTest = ContainerTest;
using DestructionManagerDeathTest = ContainerTest;

std::vector<int> destroyed;

struct Noting {
    explicit Noting(int noted) : number(noted) {}
    Noting(const Noting&) = delete;
    Noting& operator=(const Noting&) = delete;
    ~Noting() { destroyed.push_back(number); }
    int number;
};

Noting* noteIn(alloclib::RegionGeneral* region, int number) {
    return new (alloclib::allocate(*region, sizeof(Noting), 8)) Noting(number);
}

TEST_F(DestructionManagerTest, LastRegisteredGoesFirst) {
    destroyed.clear();
    DestructionManager manager;
    EXPECT_TRUE(manager.isEmpty());
    for (int i = 1; i <= 3; ++i) {
        manager.add(region(), noteIn(region(), i));
    }
    EXPECT_FALSE(manager.isEmpty());
    manager.run();
    EXPECT_EQ(destroyed, (std::vector<int>{3, 2, 1}));
    EXPECT_TRUE(manager.isEmpty());
    manager.run();
    EXPECT_EQ(destroyed.size(), 3U);
}

TEST_F(DestructionManagerTest, EndOfTheManagerRunsIt) {
    destroyed.clear();
    {
        DestructionManager manager;
        manager.add(region(), noteIn(region(), 1));
    }
    EXPECT_EQ(destroyed, (std::vector<int>{1}));
}

TEST_F(DestructionManagerTest, ObjectsOfAnyTypeAreDestroyed) {
    DestructionManager manager;
    manager.add(region(), new (region()->Alloc(sizeof(Counted), 8, nullptr)) Counted(1));
    manager.add(region(), new (region()->Alloc(sizeof(std::string), 8, nullptr))
                              std::string(1000, 'x')); // a leak if not destroyed
    EXPECT_EQ(Counted::live, 1);
    manager.run();
    EXPECT_EQ(Counted::live, 0);
}

TEST_F(DestructionManagerTest, ObjectsOfOneRegionCanGoAlone) {
    destroyed.clear();
    alloclib::RegionGeneral* const other = alloclib::RegionGeneral::Create(0, "other");
    DestructionManager manager;
    for (int i = 0; i < 6; ++i) {
        alloclib::RegionGeneral* const owner = i % 2 == 0 ? region() : other;
        manager.add(owner, noteIn(owner, i));
    }
    manager.run(other);
    EXPECT_EQ(destroyed, (std::vector<int>{5, 3, 1}));
    other->Destroy(true);
    manager.run();
    EXPECT_EQ(destroyed, (std::vector<int>{5, 3, 1, 4, 2, 0}));
}

struct Registering {
    Registering(DestructionManager& used, alloclib::RegionGeneral* owner)
        : manager(used), region(owner) {}
    Registering(const Registering&) = delete;
    Registering& operator=(const Registering&) = delete;
    ~Registering() { manager.add(region, noteIn(region, 77)); }
    DestructionManager& manager;
    alloclib::RegionGeneral* region;
};

TEST_F(DestructionManagerTest, DestructorMayRegisterAnObject) {
    destroyed.clear();
    DestructionManager manager;
    void* const place = region()->Alloc(sizeof(Registering), 8, nullptr);
    manager.add(region(), new (place) Registering(manager, region()));
    manager.run();
    EXPECT_EQ(destroyed, (std::vector<int>{77}));
}

TEST_F(DestructionManagerTest, ObjectsRegisteredMeanwhileGoWithTheirRegion) {
    destroyed.clear();
    alloclib::RegionGeneral* const other = alloclib::RegionGeneral::Create(0, "other");
    DestructionManager manager;
    void* const place = other->Alloc(sizeof(Registering), 8, nullptr);
    manager.add(other, new (place) Registering(manager, other));
    manager.add(region(), noteIn(region(), 1));
    manager.add(other, noteIn(other, 2));
    manager.run(other);
    EXPECT_EQ(destroyed, (std::vector<int>{2, 77}));
    other->Destroy(true);
}

TEST_F(DestructionManagerDeathTest, NullArguments) {
    DestructionManager manager;
    Counted object;
    EXPECT_FAULT(manager.add(static_cast<alloclib::Region*>(nullptr), &object),
                 "elfext/interface/destruction_manager", "region != NULL");
    EXPECT_FAULT(manager.add(region(), static_cast<Counted*>(nullptr)),
                 "elfext/interface/destruction_manager", "object != NULL");
}

} // namespace
} // namespace elfext::test

// The snippets of docs/ownership.md, compiled and run: every "```cpp" block there stands here, line for line.
#include "tests/support/Build.h"
#include "tests/support/Reports.h"

#include <algorithm>
#include <fstream>
#include <thread>

namespace kivds::test {

namespace {

constexpr unsigned long kRows = 0x00280010;
constexpr unsigned long kWindows = 0x00540010; // Energy Window Vector

/// A file's lines without their indentation.
std::string Lines(const std::string& path)
{
    std::ifstream file(path);
    std::string lines;
    for (std::string line; std::getline(file, line);)
        lines += line.substr(std::min(line.find_first_not_of(' '), line.size())) + '\n';
    return lines;
}

using OwnershipDocTest = ReportTest;

} // namespace

TEST_F(OwnershipDocTest, EverySnippetStandsInThisFile)
{
    const std::string docs = KIVDS_DOCS_DIR;
    const std::string document = Lines(docs + "/ownership.md");
    const std::string source = Lines(docs + "/../tests/OwnershipDocTest.cpp");
    const std::string open = "\n```cpp\n";
    int snippets = 0;
    for (std::size_t at = 0; (at = document.find(open, at)) != std::string::npos; ++snippets) {
        at += open.size();
        const std::string snippet = document.substr(at, document.find("```\n", at) - at);
        EXPECT_NE(source.find(snippet), std::string::npos) << snippet;
    }
    EXPECT_GE(snippets, 9);
}

TEST_F(OwnershipDocTest, AnAttributeIsHandedOver)
{
    CKivDSDicomAttributeCollection image;
    const char bytes[] = {0x00, 0x02}; // 512

    std::unique_ptr<CKivDSDicomAttribute> rows(g_DicomAttributeFactory.CreateDicomAttribute(0));
    rows->InitFromDicomData(kRows, US, sizeof bytes, bytes, nullptr, false, false, -1, 1);
    if (image.AddAttribute(rows.get(), true))
        (void)rows.release(); // the image's now

    const CKivDSDicomAttribute* held = nullptr;
    ASSERT_TRUE(image.GetAttribute(kRows, &held, true, false));
    const SKivAGAttributeValue* const lent = held->GetValuePtr(0); // nobody's to release
    SKivAGAttributeValue copy = {};
    if (held->GetValue(0, &copy))         // a copy, in a heap block of its own
        held->DeleteAttributeValue(copy); // released by whoever asked for it
    EXPECT_EQ(lent->nCount, 1);
    EXPECT_EQ(Text(image), "(0028,0010)=[512]");
}

TEST_F(OwnershipDocTest, ShallowCopiesShareParts)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

    CKivDSDicomAttributeCollection shallow(image);    // the same parts
    CKivDSDicomAttributeCollection deep(image, true); // copies of them
    image.RemoveAttribute(kRows);
    const bool sharedHasIt = shallow.HasAttribute(kRows, true, false); // false
    const bool copyHasIt = deep.HasAttribute(kRows, true, false);      // true
    EXPECT_FALSE(sharedHasIt);
    EXPECT_TRUE(copyHasIt);

    image = deep; // copies deep's attributes into the parts that image and shallow share
    EXPECT_TRUE(shallow.HasAttribute(kRows, true, false));

    // A part that is made later is nobody's but its maker's.
    Add(image, PerFrame(kWindows, {1, 1, 2}));
    EXPECT_TRUE(image.IsMultiFrame());
    EXPECT_FALSE(shallow.IsMultiFrame());
}

TEST_F(OwnershipDocTest, ADeepCopyOfAnEnhancedFacadeSharesParts)
{
    CKivDSDicomAttributeCollection regular;

    auto* const object = new CKivDSEnhancedMFCollection; // made with new: the last facade deletes it
    const CKivDSDicomAttributeCollection facade(object);
    object->AddCollection(&regular, false); // shares the parts of regular, which stays the caller's

    const CKivDSDicomAttributeCollection copy(facade, true); // another object, but of the same parts
    const CKivDSEnhancedMFCollection apart(*object, true);   // parts of its own
    Add(regular, Numbers(kRows, {512}));
    EXPECT_TRUE(copy.HasAttribute(kRows, true, false));
    EXPECT_FALSE(apart.HasAttribute(kRows, true, false));
}

TEST_F(OwnershipDocTest, MembersOutliveWhatTheyWereMadeOf)
{
    auto* const series = new CKivDSCompoundCollection;
    const CKivDSDicomAttributeCollection facade(series); // deletes the series, and so its members
    {
        CKivDSDicomAttributeCollection image;
        series->AddCollection(&image, false); // a new member that shares the parts of image
        Add(image, Numbers(kRows, {512}));
    } // image goes, its parts stay
    const std::unique_ptr<CKivDSDicomAttributeCollection> member(series->GetCollection(0, false));
    EXPECT_TRUE(member->HasAttribute(kRows, true, false));
}

TEST_F(OwnershipDocTest, ResultsAreTheCallersToDelete)
{
    const auto former = Collection({{kRows, 512}});
    const auto latter = Collection({{kRows, 256}});

    const std::unique_ptr<CKivDSDicomAttributeCollection> changed(*former / *latter);
    CKivDSDicomAttributeCollection* single = nullptr;
    CKivDSDicomAttributeCollection* multi = nullptr;
    former->Split(single, multi, false); // on failure both are null
    const std::unique_ptr<CKivDSDicomAttributeCollection> ownedSingle(single);
    const std::unique_ptr<CKivDSDicomAttributeCollection> ownedMulti(multi);
    EXPECT_EQ(Text(*changed), "(0028,0010)=[256]");
    EXPECT_EQ(Text(*ownedSingle), "(0028,0010)=[512]");
}

TEST_F(OwnershipDocTest, AScopeIsCopiedOrTakenOver)
{
    CKivDSDicomAttributeCollection image;

    auto scope = std::make_unique<CKivIPPScopeElementC>();
    scope->SetType(g_ScopeElementType);
    scope->Initialize(3);
    image.SetScope(scope.get(), true); // a copy; scope stays the caller's
    if (image.SetScope(scope.get(), false))
        (void)scope.release(); // taken over

    const std::unique_ptr<CKivIPPScopeC> found(image.GetScope()); // a new one each time
    EXPECT_NE(found, nullptr);
}

TEST_F(OwnershipDocTest, WhoeverChangesTellsTheIterators)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

    struct Editor : CKivDSSubscriber
    {
        void Notify(CKivDSBase*, int, long, long) override {}
        void TellIterators() { NotifySubscribers(eNotifyInvalidateIterator, 0, 0); }
    } editor;
    CKivDSDicomAttributeCollectionIterator walk(image, true, true); // borrows image
    editor.Subscribe(&walk);                                        // the editor does not own walk
    walk.GetFirstAttribute();
    image.RemoveAllAttributes();
    editor.TellIterators();
    const CKivDSDicomAttribute* const next = walk.GetNextAttribute(); // null: the walk has ended
    editor.Unsubscribe(&walk);                                        // before walk goes
    EXPECT_EQ(next, nullptr);
}

TEST_F(OwnershipDocTest, ThreadsShareUnderALock)
{
    CKivDSDicomAttributeCollection image;
    Add(image, Numbers(kRows, {512}));

    CRWLock lock; // of the parts that image and its shallow copies share
    std::thread writer([&lock, shared = CKivDSDicomAttributeCollection(image)]() mutable {
        lock.EnterWriteLock();
        shared.RemoveAttribute(kRows);
        lock.LeaveWriteLock();
    }); // shared goes with the thread, and needs no lock for that: the counts are atomic
    lock.EnterReadLock();
    const bool held = image.HasAttribute(kRows, true, false); // still, or no longer
    lock.LeaveReadLock();
    writer.join();
    EXPECT_FALSE(image.HasAttribute(kRows, true, false)) << held;
}

TEST_F(OwnershipDocTest, AListenerLeavesBeforeItsContext)
{
    struct Log
    {
        Log() { g_KivIPError.SetListener(&Log::Listen, this); }
        ~Log() { g_KivIPError.SetListener(nullptr, nullptr); } // waits until Listen runs nowhere
        static void Listen(void* context, const wchar_t* function, const wchar_t*, int)
        {
            static_cast<Log*>(context)->m_Last = function; // copied: the texts go after the call
        }
        std::wstring m_Last;
    } log;
    CKivDSDicomAttributeCollection().RemoveAttribute(kRows);
    CKivDSDicomAttributeCollection(false).RemoveAttribute(kRows);
    EXPECT_EQ(log.m_Last, L"CKivDSDicomAttributeCollection::RemoveAttribute");
}

} // namespace kivds::test

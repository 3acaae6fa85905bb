// Turns the host's scene into what the viewport draws.
#pragma once

#include <render/references.h>
#include <render/scenemodel.h>
#include <render/texturestore.h>

#include <kiln/interface.h>
#include <kiln/nodelook.h>

#include <functional>
#include <map>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace render {

/// Numbers for the status bar.
struct SceneCounts {
    int nodes = 0;          ///< without the root
    int hidden = 0;         ///< nodes that are hidden themselves
    std::size_t faces = 0;  ///< polygons shown
};

/// Where joints are shown in place of what the scene says of them, by the handles of their nodes.
using Poses = std::unordered_map<DWORD, NodeJoint::Values>;
/// The same of nodes in files that the scene refers to. They are looked up, and never followed.
using FilePoses = std::unordered_map<const INode*, NodeJoint::Values>;

/// Keeps a model and the node behind each of its items. Node pointers are those of the scene at the
/// last `build`.
///
/// What instances and references to other files show is a model of its own, which is made once and
/// placed as often as it is shown.
class SceneFeed {
public:
    /// Reads the whole scene. Hidden nodes are left out, and what they shine with;
    /// their children are not, except below what only instances show. What a switch does not show
    /// is left out with all below it. A node that shows another
    /// one's subtree shows it in its own place; what shows itself in this way is left out at the
    /// second time. Of files that are referred to those are shown that have been read. Throws
    /// `std::bad_alloc`, with a part of the scene shown.
    void build(Interface& host);
    /// Takes over that these nodes have changed, that the transforms of others have, and nothing
    /// else since `build`. Of those that have changed these and what is below them are read, of the
    /// others nothing but their meshes. False when that is not enough, or would be no faster: the
    /// model is then good for nothing until the next `build`. Throws `std::bad_alloc`, and then
    /// likewise.
    bool follow(Interface& host, std::span<INode* const> changed,
                std::span<INode* const> moved = {});
    /// Has joints of the scene shown in these poses, and the others as the scene says, from the
    /// next `build` or `followPoses` on. A file that is shown in several places moves in all of
    /// them.
    void setPoses(Poses poses, FilePoses inFiles = {});
    /// The nodes of other files that are shown, with all below them, each once; until files are
    /// read anew (`noticeChanges`).
    std::vector<INode*> fileTops() const;
    /// Takes over the poses since the last `build`: what they move is moved, and nothing is read of
    /// it but its mesh. False when that is not enough, as where instances show what is moved; the
    /// model is then good for nothing until the next `build`. Throws `std::bad_alloc`, and then
    /// likewise.
    bool followPoses(Interface& host);
    /// Takes over which nodes are selected, when nothing else has changed since `build`.
    void updateSelection();
    /// Whether pictures or files that are referred to have changed on disk since they were read:
    /// `build` then reads them anew.
    bool noticeChanges();
    /// Forgets the scene, whose nodes are about to go.
    void clear();

    const SceneModel& model() const { return model_; }
    /// Null for kNoItem. What an instance or a reference shows is the node that shows it.
    INode* nodeOf(ItemIndex item) const;
    /// The nodes that are shown in their own place, each once.
    std::span<INode* const> nodes() const { return shown_; }
    /// Pictures and files that could not be shown since this was asked last, one sentence each.
    std::vector<std::string> takeFailures();
    const SceneCounts& counts() const { return counts_; }

    /// What references do not find now, one sentence each.
    std::vector<std::string> missing() const { return references_.missing(); }
    std::size_t missingCount() const { return references_.missingCount(); }
    /// The files that the scene refers to and that have not been read, in the order in which they
    /// were found: once they have been (`kiln::FileScenes`), `build` shows them, and may find more.
    const std::vector<std::string>& unread() const { return references_.unread(); }
    /// Has `unread` and read, until there is nothing more to read or `mayGoOn`, asked before each
    /// file, says no. Returns whether all files are read and shown.
    bool readFiles(Interface& host, const std::function<bool(const std::string& path)>& mayGoOn);

private:
    /// That many nodes of the scene are read to be shown by way of instances; a file of nested
    /// ones could ask for more than any memory holds.
    static constexpr std::size_t kMostInstanced = 200'000;
    /// And each node of a file so often, on an average.
    static constexpr std::size_t kTimesRead = 4;
    /// Models within one another.
    static constexpr std::size_t kDeepestInstance = 512;
    /// And of how many points are made to stand for them.
    static constexpr std::size_t kDeepestStandIn = 8;
    /// Models that lack something because of what they are within, and are made anew elsewhere; of
    /// any more the first one is shown everywhere.
    static constexpr std::size_t kMostCut = 1000;
    /// Items that are shown, those of placed models at each of their places.
    static constexpr std::uint64_t kMostShown = 20'000'000;
    static constexpr std::size_t kMostLights = 4096;

    /// Whether a place turns fronts into backs, and whether it is one at all.
    enum class Handedness : std::uint8_t { kNone, kKept, kMirrored };

    /// What nodes have from those above them.
    struct Inherited {
        Matrix3 move;  ///< from where the scene has them to where they are shown
        bool isMoved = false;
        bool smooth = true;
        std::uint8_t hours = kAllHours;
        float opacity = 1;
        RangeIndex range = 0;
        float lightStrength = 1;
        LightChange lightChange = LightChange::kAsTheySay;
    };

    struct Visit {
        INode* node;
        std::size_t parent;          ///< position among the visits
        ItemIndex item = kNoItem;    ///< kNoItem for one that is not shown
        ItemIndex placed = kNoItem;  ///< that shows a model of others, if it does
        Box subtree = {};
        bool elsewhere = false;   ///< in what is seen only where instances show it
        bool isOff = false;       ///< a switch above does not show it
        bool isMeasured = false;  ///< its range counts from the middle of its subtree
        Handedness handedness = Handedness::kNone;  ///< of its place, where it is shown
        std::uint32_t inherited = 0;                ///< index among what is inherited
        std::uint32_t below = 0;  ///< the same of what its children have from it; 0: nothing
        RangeIndex range = 0;     ///< in which its children are seen; 0: in any
        std::uint32_t firstChild = 0, childCount = 0;  ///< positions among the visits
        std::size_t faces = 0;
        const Object* object = nullptr;
        std::uint32_t firstLight = 0, lightCount = 0;  ///< its own, and those of what it shows
    };

    /// What is read into one model: the scene, or what instances and references show of it.
    struct Reading {
        SceneModel& model;
        Reading* within = nullptr;  ///< null for the scene
        INode* top = nullptr;       ///< what is read
        const std::string* folder;  ///< of the file that it is in; empty for the scene's own
        std::size_t depth = 0;
        std::uint32_t looksBy = 0;  ///< as what refers to it has it, or 0
        bool isCut = false;         ///< something is left out because of what it is within
        std::size_t faces = 0;
        std::vector<Visit> visits = {};
        std::vector<Inherited> inherited = {};  // the first is that of the top
        bool isFollowing = false;               ///< visits are made again
        ItemIndex placedBefore = kNoItem;       ///< by the one that is being made again
        bool hasJoints = false;                 ///< in a file
    };

    /// How a model with joints was read, for moving them.
    struct Kept {
        INode* top;
        std::string folder;
        std::vector<Visit> visits;
        std::vector<Inherited> inherited;
    };

    /// What instances and references show.
    struct Shared {
        std::shared_ptr<SceneModel> model = {};
        std::size_t faces = 0;
        std::shared_ptr<Kept> kept = {};  ///< of a file, where it has joints
        std::size_t number = 0;           ///< greater than those of models within
        bool hadStandIn = false;          ///< before it was moved
    };
    using MovedModels = std::set<const SceneModel*>;
    /// By what it is of, whether its vertices' normals count, whether it is moved, and how what
    /// refers to it has it look.
    using SharedKey = std::tuple<INode*, bool, bool, std::uint32_t>;

    void reset();
    void readScene(Interface& host);
    void visitAll(Reading& reading);
    void visit(Reading& reading, std::size_t at);
    void visitChildren(Reading& reading, std::size_t at);
    void decide(Reading& reading, std::size_t at);
    void show(Reading& reading, std::size_t at);
    ItemIndex openPlaced(Reading& reading);
    bool followMoves(Reading& scene, std::span<const std::size_t> tops);
    bool isOfInstances(std::span<const Visit> visits, std::size_t at) const;
    bool followNode(Reading& scene, std::size_t top, std::size_t& allowed);
    bool revisit(Reading& scene, std::size_t at);
    void boundAbove(Reading& scene, std::size_t at, Box before);
    void indexVisits();
    std::size_t visitOf(const INode* node) const;
    const NodeJoint::Values* poseOf(const Reading& reading, INode& node) const;
    bool movePosed(Reading& reading, std::vector<std::uint8_t>& marks);
    bool followFilePoses(MovedModels& moved);
    bool moveShared(Shared& shared, const std::set<const INode*>& posed, MovedModels& moved);
    static bool movePlacements(SceneModel& model, const MovedModels& moved);
    void passDown(Reading& scene, std::size_t at, bool isPosed);
    bool moveVisit(Reading& scene, std::size_t at);
    bool moveNode(const Reading& scene, const Visit& visit, const Matrix3& place);
    static bool moveLights(const Reading& scene, const Visit& visit, const Matrix3& place);
    std::uint32_t inheritanceOf(Reading& reading, std::size_t at, const NodeBranch& branch);
    void addRange(Reading& reading, std::size_t at, const ViewRange& range, Inherited& below);
    bool isElsewhere(const Reading& reading, std::size_t at) const;
    void showInstanced(Reading& reading, std::size_t at, INode& definition);
    void showReference(Reading& reading, std::size_t at, const NodeReference& reference);
    void showMissing(Reading& reading, std::size_t at);
    void place(Reading& reading, std::size_t at, const Shared& shared);
    Shared sharedOf(Reading& reading, INode& top, std::size_t at, const Matrix3& move,
                    const std::string& folder, std::uint32_t looksBy);
    bool mayRead(Reading& reading, const INode& top) const;
    static Matrix3 placeOf(const Reading& reading, std::size_t at);
    static Handedness handednessOf(const Matrix3& place);
    void addNode(Reading& reading, std::size_t at, bool standsForAnother);
    COLORREF addLight(Reading& reading, const Matrix3& place, const class GenLight& light,
                      INode& node);
    void addMesh(Reading& reading, const Matrix3& place, const struct Mesh& mesh, INode& node,
                 const Inherited& inherited);
    void addTriangles(Reading& reading, const struct Mesh& mesh, const NodeLook& look, Color color,
                      std::span<const PictureLayer* const> layers, bool isMirrored);
    NodeLook lookOf(INode& node);
    Surface surfaceFor(const Reading& reading, const NodeLook& look, bool hasTexture,
                       Color wireColor);
    std::vector<const PictureLayer*> layersFor(const Reading& reading, const NodeLook& look,
                                               const struct Mesh& mesh, bool hasTexture,
                                               Surface& surface);
    void addFinishes(Reading& reading, const Matrix3& place, const struct Mesh& mesh,
                     const NodeLook& look);
    void addPoints(Reading& reading, const Matrix3& place, const struct Mesh& mesh, INode& node,
                   const Inherited& inherited);
    static void boundSubtrees(Reading& reading);
    static Box boundsOf(const Reading& reading, std::size_t at);
    static void setBounds(Reading& reading, std::size_t at, const Box& box);

    SceneModel model_;
    TextureStore textures_;
    References references_{textures_.files()};
    NodeLookSource* looks_ = nullptr;  // while the scene is being read
    const NodeLookSource* askedLast_ = nullptr;
    std::vector<INode*> nodes_;  // by item
    std::vector<INode*> shown_;
    std::vector<Visit> visits_;               // of the scene itself
    std::vector<Inherited> inherited_;        // the same
    std::vector<std::size_t> byNode_;         // visits by the addresses of their nodes
    std::vector<const Object*> severalHave_;  // objects of more than one node, by their addresses
    std::set<const INode*> tops_;             // what instances in the scene show
    bool isIndexed_ = false;
    std::map<SharedKey, Shared> instanced_;   // of the scene, as it is, or as it has files look
    std::map<SharedKey, Shared> referenced_;  // of files, as long as none is read
    std::uint64_t filesRead_ = 0;             // when `referenced_` was made
    std::size_t nodesInstanced_ = 0, mostInstanced_ = 0, cut_ = 0;
    std::size_t sharedMade_ = 0;
    Poses poses_;
    FilePoses filePoses_;
    std::vector<DWORD> newlyPosed_;                // or no more, since what is shown was read
    std::vector<const INode*> newlyPosedInFiles_;  // the same
    std::vector<Vec3d> places_;                    // working memory
    std::vector<Vec3> normals_;                    // the same
    std::vector<char> chosen_;                     // by visit: selected, or below what is
    std::vector<Finish> finishes_;                 // working memory
    SceneCounts counts_;
};

}  // namespace render

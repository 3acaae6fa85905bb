#include "plan.h"
#include "../texts.h"

#include "../recordcache.h"
#include "../sourcerecords.h"
#include "../transforms.h"

#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>
#include <quillon/fltfactory.h>
#include <quillon/fltinstance.h>
#include <quillon/fltrecord.h>

#include <algorithm>
#include <map>
#include <unordered_set>

namespace interchange {

namespace {

bool isOfKind(INode* node, FltNodeKind wanted) {
    FltNodeKind kind{};
    return fltGetKind(node, false, kind) && kind == wanted;
}

bool isHeader(INode* node) {
    return isOfKind(node, FltNodeKind::Header);
}

/// The database that `node` belongs to; null for none.
INode* databaseAbove(INode* node) {
    while (node != nullptr && !isHeader(node)) node = node->GetParentNode();
    return node;
}

std::vector<INode*> databasesIn(Interface& host) {
    std::vector<INode*> databases;
    ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
        if (!isHeader(&node)) return WalkStep::kOn;
        databases.push_back(&node);
        return WalkStep::kPastThis;
    });
    return databases;
}

/// Whether records of that kind can be written: the library has the class, or the node keeps what
/// was read.
bool isWritable(INode& node, FltNodeKind kind) {
    const auto opcode = static_cast<std::uint16_t>(kind);
    static RecordCache classes(fltCreateRecord);
    if (classes.of(opcode) != nullptr) return true;
    const SourceRecords kept = sourceRecordsOf(node);
    return !kept.record.empty() && kept.record.opcode() == opcode;
}

class Planner {
public:
    Planner(const ExportOptions& options, Interface& host)
        : host_(host), top_(options.top), selectedOnly_(top_ != nullptr || options.selectedOnly) {
        collectSelected();
        database_ = findDatabase(options);
    }

    Plan run() {
        if (selectedOnly_) {
            selectDefinitions();
        } else {
            plan_.nodes.reserve(static_cast<std::size_t>(host_.GetNodeCount()) + 1);
        }
        PlanNode header;
        header.node = database_;
        header.kind = FltNodeKind::Header;
        plan_.nodes.push_back(header);
        open_.push_back(0);
        INode* const root = host_.GetRootNode();
        if (database_ != nullptr) addChildren(*database_, databasePlace());
        for (int i = 0; i < root->NumberOfChildren(); ++i) {
            INode* const child = root->GetChildNode(i);
            if (databaseAbove(child) == nullptr) add(*child, Matrix3(), false);
        }
        plan_.nodes.front().end = static_cast<std::uint32_t>(plan_.nodes.size());
        const std::size_t databases = databasesIn(host_).size();
        plan_.otherDatabases = databases == 0 || top_ != nullptr ? 0 : databases - 1;
        if (database_ == nullptr && plan_.nodes.size() == 1) {
            throw ExportError(text(TextId::kNoNodes));
        }
        return std::move(plan_);
    }

private:
    void collectSelected() {
        if (top_ != nullptr) return select(top_);
        for (int i = 0; i < host_.GetSelNodeCount(); ++i) {
            select(host_.GetSelNode(i));
        }
        if (selectedOnly_ && selected_.empty()) throw ExportError(text(TextId::kNoneSelected));
    }

    void select(INode* node) {
        if (!selected_.insert(node).second) return;
        reached_.push_back(node);
        for (; node != nullptr && leading_.insert(node).second; node = node->GetParentNode()) {
            bring_.push_back(node);
        }
    }

    /// What references show goes along with them: the definitions of the database, or of what hangs
    /// outside of any.
    void selectDefinitions() {
        if (database_ != nullptr) findDefinitions(*database_);
        INode* const root = host_.GetRootNode();
        for (int i = 0; i < root->NumberOfChildren(); ++i) {
            INode* const child = root->GetChildNode(i);
            if (!isHeader(child)) findDefinitions(*child);
        }
        const auto isElsewhere = [this](INode* node) {
            INode* const database = databaseAbove(node);
            return database != nullptr && database != database_;
        };
        std::erase_if(bring_, isElsewhere);
        std::erase_if(reached_, isElsewhere);
        std::unordered_set<const INode*> below;  // selected nodes and those below them
        while (!bring_.empty() || !reached_.empty()) {
            std::vector<INode*>& next = bring_.empty() ? reached_ : bring_;
            INode* const node = next.back();
            const bool isBelow = &next == &reached_;
            next.pop_back();
            if (isBelow && !below.insert(node).second) continue;
            selectDefinitionOf(*node);
            for (int i = 0; isBelow && i < node->NumberOfChildren(); ++i) {
                reached_.push_back(node->GetChildNode(i));
            }
        }
    }

    void findDefinitions(INode& top) {
        ForEachInSubtree(&top, [&](INode& node) {
            FltInstanceDef definition;
            if (isOfKind(&node, FltNodeKind::InstanceDef) && fltGetRecord(&node, definition)) {
                definitions_.emplace(definition.instanceNumber, &node);
            }
        });
    }

    void selectDefinitionOf(INode& node) {
        FltInstanceRef reference;
        if (!isOfKind(&node, FltNodeKind::InstanceRef) || !fltGetRecord(&node, reference)) return;
        const auto found = definitions_.find(reference.instanceNumber);
        if (found != definitions_.end()) select(found->second);
    }

    INode* findDatabase(const ExportOptions& options) const {
        if (top_ != nullptr) return databaseAbove(top_);
        const std::vector<INode*> databases = databasesOf(host_, options);
        if (options.database == nullptr && databases.size() < 2) {
            return databases.empty() ? nullptr : databases.front();
        }
        if (std::ranges::find(databases, options.database) != databases.end()) {
            return options.database;
        }
        throw ExportError(text(TextId::kWhichDatabase));
    }

    /// A header cannot be moved in a file, except as it was when it was read; its children can.
    Matrix3 databasePlace() const {
        if (top_ != nullptr) return {};
        const Matrix3 place = database_->GetLocalTM(host_.GetTime());
        return place == keptPlace(sourceRecordsOf(*database_)) ? Matrix3() : place;
    }

    /// Where a node of the scene is on the way: itself, what moves it from above, and whether it is
    /// below a selected one.
    struct Pending {
        INode* node;
        Matrix3 above;
        bool selected;
        std::size_t level;  ///< of `open_` to which it belongs
    };

    void addChildren(INode& node, const Matrix3& above) {
        const bool selected = !selectedOnly_ || selected_.contains(&node);
        for (int i = 0; i < node.NumberOfChildren(); ++i) {
            add(*node.GetChildNode(i), above, selected);
        }
    }

    /// Adds `top` and all below it, without recursion.
    void add(INode& top, const Matrix3& above, bool selected) {
        std::vector<Pending> pending{{&top, above, selected, open_.size()}};
        while (!pending.empty()) {
            const Pending next = pending.back();
            pending.pop_back();
            closeDownTo(next.level);
            addOne(next, pending);
        }
        closeDownTo(1);
    }

    void closeDownTo(std::size_t levels) {
        for (; open_.size() > levels; open_.pop_back()) {
            plan_.nodes[open_.back()].end = static_cast<std::uint32_t>(plan_.nodes.size());
        }
    }

    void addOne(const Pending& next, std::vector<Pending>& pending) {
        INode& node = *next.node;
        const bool selected = next.selected || !selectedOnly_ || selected_.contains(&node);
        if (isHeader(&node) || (!selected && !leading_.contains(&node))) return;
        FltNodeKind kind{};
        Matrix3 above;
        if (top_ != nullptr && !selected) {
            // It only leads to the top, or to what that refers to.
        } else if (fltGetKind(&node, true, kind) && isWritable(node, kind)) {
            addToPlan(node, kind, next.above);
        } else {
            above = node.GetLocalTM(host_.GetTime()) * next.above;
        }
        for (int i = node.NumberOfChildren(); i-- > 0;) {
            pending.push_back({node.GetChildNode(i), above, selected, open_.size()});
        }
    }

    void addToPlan(INode& node, FltNodeKind kind, const Matrix3& above) {
        if (open_.size() >= kDeepestLevel) {
            throw ExportError(
                text(TextId::kDeepNode, {node.GetName(), std::to_string(kDeepestLevel)}));
        }
        PlanNode planned;
        planned.node = &node;
        planned.kind = kind;
        if (!above.IsIdentity()) {
            planned.above = static_cast<std::uint32_t>(plan_.above.size());
            plan_.above.push_back(above);
        }
        ++plan_.nodes[open_.back()].children;
        open_.push_back(static_cast<std::uint32_t>(plan_.nodes.size()));
        plan_.nodes.push_back(planned);
    }

    Interface& host_;
    INode* top_;
    bool selectedOnly_;
    Plan plan_;
    INode* database_ = nullptr;
    std::vector<std::uint32_t> open_;  ///< nodes of the plan whose children are being added
    std::unordered_set<const INode*> selected_;
    std::unordered_set<const INode*> leading_;  ///< selected nodes and those above them
    std::vector<INode*> bring_;                 ///< of `leading_`, whose definitions are to come
    std::vector<INode*> reached_;  ///< selected ones, with whose subtrees it is the same
    std::map<std::int16_t, INode*> definitions_;  ///< by number, the first of each
};

}  // namespace

std::vector<INode*> databasesOf(Interface& host, const ExportOptions& options) {
    std::vector<INode*> all = databasesIn(host);
    if (!options.selectedOnly) return all;
    std::unordered_set<const INode*> above;
    for (int i = 0; i < host.GetSelNodeCount(); ++i) {
        INode* node = host.GetSelNode(i);
        for (; node != nullptr && above.insert(node).second; node = node->GetParentNode()) continue;
    }
    std::vector<INode*> holding = all;
    std::erase_if(holding, [&](const INode* database) { return !above.contains(database); });
    return holding.empty() ? all : holding;
}

Plan planExport(const ExportOptions& options, Interface& host) {
    return Planner(options, host).run();
}

Matrix3 placeInFile(const Plan& plan, const PlanNode& node) {
    const Matrix3 local = node.node->GetLocalTM(0);
    return node.above == kNone ? local : local * plan.above[node.above];
}

}  // namespace interchange

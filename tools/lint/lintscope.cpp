// Loaded into clang-tidy by cmake/lint.
//
// clang-tidy matches its checks against everything that a source includes, and drops what it found
// in system headers: most of its time. Here it is told to look at the declarations of ours alone.
// They are collected as they are parsed: to ask the translation unit for them would read all of a
// precompiled header.
// What a source was made of, beside what is precompiled, is written to the file that LINT_FILES
// names, one path a line.
#include <clang/AST/ASTConsumer.h>
#include <clang/AST/ASTContext.h>
#include <clang/Frontend/FrontendPluginRegistry.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

class OwnDeclarations : public clang::ASTConsumer {
    bool HandleTopLevelDecl(clang::DeclGroupRef group) override {
        // Instances of templates come too, and are reached from their templates.
        for (clang::Decl* declaration : group)
            if (!declaration->isFromASTFile() &&
                declaration->getLexicalDeclContext()->isTranslationUnit())
                parsed_.push_back(declaration);
        return true;
    }

    void HandleTranslationUnit(clang::ASTContext& context) override {
        const clang::SourceManager& sources = context.getSourceManager();
        std::vector<clang::Decl*> own;
        for (clang::Decl* declaration : parsed_)
            if (!sources.isInSystemHeader(sources.getExpansionLoc(declaration->getLocation())))
                own.push_back(declaration);
        context.setTraversalScope(own);

        if (const char* path = std::getenv("LINT_FILES")) {
            std::ofstream files(path);
            for (auto file = sources.fileinfo_begin(); file != sources.fileinfo_end(); ++file)
                if (const llvm::StringRef name = file->first->tryGetRealPathName(); !name.empty())
                    files << name.str() << '\n';
        }
    }

    std::vector<clang::Decl*> parsed_;
};

class LintScope : public clang::PluginASTAction {
    ActionType getActionType() override { return AddBeforeMainAction; }
    bool ParseArgs(const clang::CompilerInstance&, const std::vector<std::string>&) override {
        return true;
    }
    std::unique_ptr<clang::ASTConsumer> CreateASTConsumer(clang::CompilerInstance&,
                                                          llvm::StringRef) override {
        return std::make_unique<OwnDeclarations>();
    }
};

const clang::FrontendPluginRegistry::Add<LintScope> added("lint-scope",
                                                          "declarations of ours alone");

}  // namespace

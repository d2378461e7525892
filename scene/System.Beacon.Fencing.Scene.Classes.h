// The nodes of a scene. Scene thread only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

namespace Detail {

template <class TEvent>
struct TCallOf;
template <class... TArguments>
struct TCallOf<TMethod<void(TArguments...)>> : TEventCall<TArguments...> {};

}  // namespace Detail

/// Implements, in a class with a list `FEvents`, how handlers of a kind are connected, and how the
/// kind is emitted. The object is kept alive while its handlers are called.
#define FENCING_NODE_EVENT(KIND)                                                        \
  void Connect##KIND(EventKinds::KIND::TEvent AnEvent) override {                       \
    FEvents.AddEvent(EventKinds::KIND::Mask, EventKinds::KIND::Id, std::move(AnEvent)); \
  }                                                                                     \
  void Disconnect##KIND(const EventKinds::KIND::TEvent& AnEvent) override {             \
    FEvents.RemoveEvent(EventKinds::KIND::Mask, EventKinds::KIND::Id, AnEvent);         \
  }                                                                                     \
  void Disconnect##KIND##Object(const TObject* AnObject) override {                     \
    FEvents.RemoveEvent(EventKinds::KIND::Id, AnObject);                                \
  }                                                                                     \
  template <class... TArguments>                                                        \
  void Emit##KIND(const TArguments&... AArguments) {                                    \
    if (!FEvents.IsEnabledMask(EventKinds::KIND::Mask)) return;                         \
    const TRef<IInterface> Keep(this);                                                  \
    Detail::TCallOf<EventKinds::KIND::TEvent>::Call(                                    \
        FEvents, EventKinds::KIND::Mask, EventKinds::KIND::Id, AArguments...);          \
  }

// ---------------------------------------------------------------- TEntity

/// Named after a new identifier until it is given a name.
class TEntity : public TInterfacedObject, public virtual IEntity {
 public:
  FENCING_CLASS_INFO()

  TEntity();

  const std::string& GetName() const override { return FName; }
  void SetName(const std::string& AName) override;
  std::string GetAlias() const override { return FName; }
  TGUID GetId() const override { return FId; }
  void SetId(const TGUID& AValue) { FId = AValue; }
  void ReassignId() override;
  void InvalidateId() override { FId = {}; }
  void SetProperty(std::string_view AName, const TValue& AValue) override;
  TValue GetProperty(std::string_view AName) const override;
  bool ContainsProperty(std::string_view AName) const override;
  /// False for "RefCount".
  bool AllowDesignProperty(std::string_view AName) const override;
  bool InvalidatePropertyValue(const std::string&) override { return false; }
  void Detach() override {}

 protected:
  /// Runs after the name has changed.
  virtual void ChangedName(const std::string&) {}

  TEventList FEvents;

 private:
  TGUID FId;
  std::string FName;
};

// ---------------------------------------------------------------- TNode

/// A node. It starts in the modes `Visible` and `Active`. Children are other `TNode`s, nodes of
/// foreign making are ignored. What handlers and overrides do to the tree while it changes is done
/// at once; the change then goes on with what it finds.
class TNode : public TEntity, public virtual INode {
 public:
  FENCING_CLASS_INFO()

  /// Announces the node (`TSceneRegistry`).
  void AfterConstruction() override;
  /// Emits `Destroying`, then detaches the children from the last to the first.
  void BeforeDestruction() noexcept override;

  void Detach() override { SetParent(nullptr); }

  TNodes GetHierarchyPath() override;
  std::int32_t GetChildCount() const override {
    return static_cast<std::int32_t>(FChildren.size());
  }
  TRef<INode> GetChildAt(std::int32_t AIndex) const override { return FChildren[AIndex]; }
  TRef<INode> GetChild(std::string_view AName) const override;
  void AddChild(const TRef<INode>& AChild) override { AddChild(AChild, false); }
  void AddFrontChild(const TRef<INode>& AChild) override { AddChild(AChild, true); }
  void AddChild(const TRef<INode>& AChild, bool AFront);
  TNodes GetChildren() const override;
  void SetChildren(const TNodes& AChildren) override;
  bool RemoveChild(INode* AChild) override;
  bool RemoveDescendant(INode* ANode) override;
  void RemoveAllChilds() override;
  bool ContainsChild(std::string_view AName) const override { return GetChildIndex(AName) >= 0; }
  bool ContainsChild(const INode* ANode) const override { return GetChildIndex(ANode) >= 0; }
  std::int32_t GetChildIndex(std::string_view AName) const override;
  std::int32_t GetChildIndex(const INode* ANode) const override;
  bool SetChildIndex(INode* AChild, std::int32_t AIndex) override;
  void MoveChildToFront(std::int32_t AIndex) override;
  void MoveChildToFront(const TNames& ANames) override;
  void MoveChildToBack(std::int32_t AIndex) override;
  void MoveChildToBack(const TNames& ANames) override;
  void ReorderChildren(const TNames& ANames) override;
  void SwapChildren(std::int32_t I, std::int32_t J) override;
  void SetParent(INode* AParent) override;
  INode* GetParent() const override { return FParent; }
  INode* GetRootNode() override;
  void SetMode(TModeSet AMode) override;
  void EnableModes(std::span<const TMode> AModes) override;
  void DisableModes(std::span<const TMode> AModes) override;
  void EnableMode(TMode AMode) override { FMode.Enable(AMode); }
  void DisableMode(TMode AMode) override { FMode.Disable(AMode); }
  TModeSet GetMode() const override { return FMode; }

  /// True while `SetChildren` runs: the tree is being loaded, not edited.
  bool GetLoadingChildren() const noexcept { return FLoadingChildren; }
  void SetLoadingChildren(bool AValue) noexcept { FLoadingChildren = AValue; }

  FENCING_NODE_EVENT(PropertyChange)
  FENCING_NODE_EVENT(NameChange)
  FENCING_NODE_EVENT(Destroying)
  FENCING_NODE_EVENT(ParentChange)
  void DisconnectEventObject(const TObject* AnObject) override { FEvents.RemoveEvent(AnObject); }

 protected:
  // What happened, for descendants.
  virtual void AddedChild(INode*, bool /*AFront*/) {}
  virtual void RemovedChild(INode*) {}
  virtual void SettedParent(INode*) {}
  virtual void MovedChildToFront(INode*) {}
  virtual void MovedChildToBack(INode*) {}
  virtual void ChangedChildrenOrder(const TNodes&) {}
  virtual void SettedMode(TModeSet) {}
  void ChangedName(const std::string& AnOldName) override;

 private:
  /// Where a node stands in the list of a parent.
  struct TPlace {
    const TNode* Parent = nullptr;
    std::int32_t Index = -1;
  };
  using TChildren = std::vector<TRef<TNode>>;

  std::int32_t FindIndex(const TNode& AChild) const;
  void Insert(TNode& AChild, std::int32_t AIndex);
  void TakeOut(std::int32_t AIndex);
  void Move(std::int32_t AFrom, std::int32_t ATo);
  void Renumber(std::int32_t AFirst, std::int32_t ALast);
  void SetOrder(TChildren AChildren);
  /// The children of the names in their order, then the others.
  void SplitByNames(const TNames& ANames, TChildren& ANamed, TChildren& AOthers) const;
  bool IsBelow(const TNode& AAncestor) const;
  TRef<INode> GetParentProperty() const { return TRef<INode>(FParent); }
  void SetParentProperty(const TRef<INode>& AParent) { SetParent(AParent.Get()); }
  TSet<TMode> GetModeProperty() const;

  TModeSet FMode{TMode::Visible, TMode::Active};
  bool FLoadingChildren = false;
  TNode* FParent = nullptr;  // looks at it
  TChildren FChildren;
  // While a node moves from one parent to another it stands in both lists for a moment.
  TPlace FPlace;
  TPlace FFormerPlace;
};

}  // namespace System::Beacon::Fencing::Scene

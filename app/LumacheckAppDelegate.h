#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/support/Workspace.h"
#include "app/KeyTable.h"
#include "app/RecentPairs.h"
#include "app/Subclasses/PlayableMovie.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/messages/Message.h"
#include "app/messages/MessageWords.h"
#include "app/messages/WhyNot.h"
#include "app/scan/PlaceSearch.h"
#include "app/scan/ScanRun.h"
#include "app/verdict/Moment.h"
#include "app/verdict/Verdict.h"
#include "app/widgets/ResultsView.h"
#include "check/GammaCheck.h"
#include "check/MetadataSync.h"

class MainInterface;
class QCheckBox;
class QFileDialog;
class QLineEdit;
class QVMovieView;
class QVQTWindow;
class UserDefaults;
struct SideInterface;

/// What the controller asks of its surroundings. Platform and workspace outlive it.
struct ControllerServices {
  const PathPlatform& paths = PathPlatform::standard();
  Workspace& workspace = Workspace::standard();
  BundleInfo bundle = BundleInfo::mainBundle();
};

/// The main window's controller: owns the four movie slots, carries out the actions of the controls and wires them to
/// what does the work. Main thread only, but for the accessors of the slots.
class LumacheckAppDelegate : public QObject {
  Q_OBJECT

 public:
  using MovieSlot = std::shared_ptr<PlayableMovie>;

  /// init: opens a new log. The interface and the defaults outlive the controller.
  LumacheckAppDelegate(MainInterface& interface, UserDefaults& defaults, ControllerServices services = {});
  ~LumacheckAppDelegate() override;

  // Life of the application.

  void awakeFromNib();                   ///< awakeFromNib
  void applicationDidFinishLaunching();  ///< applicationDidFinishLaunching:
  /// applicationShouldTerminateAfterLastWindowClosed:
  static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
  void applicationWillTerminate();  ///< applicationWillTerminate:
  /// printOperationWithSettings:error: nil: the application does not print.
  static const void* printOperationWithSettings(const QVariantMap& settings, QString* error);

  // Preferences, help and troubleshooting. Pages are opened in the browser.

  /// prefsToggleQCLogging: stores the switch; what else stands in the analytics preferences is kept.
  void prefsToggleQCLogging(const QCheckBox* sender);
  void helpUserManual();      ///< helpUserManual: nothing where there is none
  void helpVextrelHome();     ///< helpVextrelHome:
  void helpReportBug();       ///< helpReportBug:
  void helpSuggestFeature();  ///< helpSuggestFeature:
  void helpSupport();         ///< helpSupport:
  void helpQVHome();          ///< helpQVHome:
  void viewLog();             ///< viewLog:
  void viewTaskLog();         ///< viewTaskLog:
  void gatherLogs();          ///< gatherLogs: returns when it is done or cancelled; the window answers meanwhile
  void manualUpdateCheck();   ///< manualUpdateCheck: opens the updater

  // Movie slots. A master and its display copy belong to one file; an empty slot is null.

  MovieSlot sourceQTMov() const { return slot(source_.master); }
  void setSourceQTMov(MovieSlot movie) { setSlot(source_.master, std::move(movie)); }
  MovieSlot destQTMov() const { return slot(dest_.master); }
  void setDestQTMov(MovieSlot movie) { setSlot(dest_.master, std::move(movie)); }
  MovieSlot sourceQTDisplayMov() const { return slot(source_.display); }
  void setSourceQTDisplayMov(MovieSlot movie) { setSlot(source_.display, std::move(movie)); }
  MovieSlot destQTDisplayMov() const { return slot(dest_.display); }
  void setDestQTDisplayMov(MovieSlot movie) { setSlot(dest_.display, std::move(movie)); }
  QVQTWindow* window() const { return window_; }
  void setWindow(QVQTWindow* window) { window_ = window; }

  // Loading. `type` is "source"; any other text means the destination.

  void loadQTMovieWithPath(const QString& path, const QString& type);  ///< loadQTMovieWithPath:type:
  void browseSource() { browse(source_.type); }                        ///< browseSource:
  void browseDest() { browse(dest_.type); }                            ///< browseDest:
  /// browseDidEnd:returnCode:contextInfo: 1 is OK; the context is the type.
  void browseDidEnd(QFileDialog* panel, int returnCode, const QString& contextInfo);
  void modifySourcePath();                                                    ///< modifySourcePath:
  void modifyDestPath();                                                      ///< modifyDestPath:
  void swapMovies();                                                          ///< swapMovies:
  void applicationOpenFiles(const QStringList& files);                        ///< application:openFiles:
  void filesDroppedOnMovieView(QVMovieView* view, const QStringList& files);  ///< filesDroppedOnMovieView:

  // Playheads.

  void updateLink();                                ///< updateLink
  void movieTimeChanged(PlayableMovie* movie);      ///< movieTimeChanged: the movie whose time changed
  void updateTimecode();                            ///< updateTimecode
  void changeTimecode(QLineEdit* sender);           ///< changeTimecode: one of the two timecode fields
  bool isTextFieldInFocus(QLineEdit* field) const;  ///< isTextFieldInFocus:
  bool disableSync() const { return disableSync_; }

  // The check and its report.

  void checkAction() { checkOnThread(); }                                          ///< checkAction:
  void checkOnThread();                                                            ///< checkOnThread
  void clearTextView() { console_.clearTextView(); }                               ///< clearTextView
  void outputText(const QString& text) { outputText(text, false, false); }         ///< outputText:
  void outputBoldText(const QString& text) { outputText(text, false, true); }      ///< outputBoldText:
  void outputErrorText(const QString& text) { outputText(text, true, false); }     ///< outputErrorText:
  void outputBoldErrorText(const QString& text) { outputText(text, true, true); }  ///< outputBoldErrorText:
  void outputText(const QString& text, bool error, bool bold);                     ///< outputText:error:bold:

  // The scan of whole movies.

  /// Begins a scan of the movies that are loaded; while one runs, ends it with what was found.
  void scanAction();
  /// Null where there is none: of the pair that is loaded, running or ended.
  ScanRun* scanRun() const { return scanRun_.get(); }
  /// Takes both movies to a place of the timeline, in seconds of the destination.
  void goToScanned(double seconds);

  // The metadata sync and the saving of the destination.

  void syncMetadata();  ///< syncMetadata:
  /// syncMetadata:dest:
  static check::SyncOutcome syncMetadata(const MovieSlot& source, const MovieSlot& dest);
  void saveDest();    ///< saveDest:
  void saveDestAs();  ///< saveDestAs:
  /// savePanelDidEnd:returnCode:contextInfo: 1 is OK; the context is not used.
  void savePanelDidEnd(QFileDialog* panel, int returnCode, void* contextInfo);

  /// What Save As writes with; Movie::writeToFile by default.
  void setCopyWriter(CopyWriter writer) { copyWriter_ = std::move(writer); }

  // What the window tells of itself. Each action ends with a message, which stays until the next.

  /// What there is to act on, and whether the destination has changes that no file has.
  WindowState state() const;
  /// Both files of a recent pair, if they are there.
  void openRecentPair(const MoviePair& pair);
  void forgetRecentPairs();

  const KeyTable& keys() const { return keys_; }

 private:
  /// One side's controls and slots.
  struct Side {
    const MovieSide side;
    const QString type, defaultsKey;
    const SideInterface& controls;
    MovieSlot master = {}, display = {};
  };
  /// A verdict, and what it is of.
  struct HeldVerdict {
    Verdict verdict;
    PairMoment moment;
  };

  Side& side(const QString& type);
  MovieSlot slot(const MovieSlot& which) const;
  void setSlot(MovieSlot& which, MovieSlot movie);
  void connectControls();
  void connectMenus();
  void showPreferences();
  void readQCLogging();
  QString shortName() const;
  void addKeys();
  void browse(const QString& type);
  Message restoreLastFile(Side& side);
  Message load(Side& side, const QString& path);
  Message loadMaster(Side& side, const QString& path);
  Message showIn(Side& side, const MovieSlot& display);
  void openPage(const QString& address);
  void observeTime(const MovieSlot& movie);
  void stopObservingTime(const MovieSlot& movie);
  void showTimecode(const Side& side);
  Message reopenReplaced(Side& side, const QString& writtenPath);
  static QString pathOf(const MovieSlot& movie);  ///< empty where there is none
  static Message changesLostWith(const MovieSlot& movie);
  void tell(const Message& message);
  void tellOfFullScreen(bool isFullScreen);
  void finish(const Message& message);
  void finishLoading(std::vector<Message> messages);
  void showState();
  Message rememberPair();
  void showRecentPairs();
  PairMoment momentNow() const;
  void showChecking(bool isChecking);
  void setVerdict(const movie::Movie& source, const movie::Movie& dest, const PairMoment& moment,
                  check::CheckOutcome& outcome);
  void showVerdict();
  void carryOut(VerdictAction action);
  void takeDestToSource();
  std::optional<movie::MovieTime> destTimeLikeSource(const PlayableMovie& source, const PlayableMovie& dest) const;
  WindowState stateWithScan() const;
  Message beginScan();
  Message dropScan();
  void scanEnded();
  void showScan();
  void showTimeline();
  void showScanPlayhead();
  void setLinkPossible(bool possible);
  const PairMap* mapInForce() const;
  std::optional<movie::MovieTime> timeToFollow(bool fromSource, const PlayableMovie& leader,
                                               const PlayableMovie& follower) const;
  bool areAtSameMoment(const PairMoment& now) const;
  void takeBothElsewhere();
  void lookForPlace();
  void goToPlace(const PlaceSearch::Outcome& outcome);

  MainInterface& interface_;
  UserDefaults& defaults_;
  const ControllerServices services_;
  bool gathering_ = false;
  mutable std::mutex slots_;
  Side source_, dest_;
  bool disableSync_ = false;
  QVQTWindow* window_;
  ViewConsole console_;
  KeyTable keys_;
  RecentPairs recentPairs_;
  bool isChecking_ = false;
  std::optional<HeldVerdict> verdict_;
  std::unique_ptr<PlaceSearch> placeSearch_;
  PairMoment placeMoment_;  ///< when it was begun
  std::unique_ptr<ScanRun> scanRun_;
  PairMoment scanMoment_;       ///< when it was begun
  bool isLinkedByMap_ = false;  ///< and could not be otherwise
  CopyWriter copyWriter_ = &movie::Movie::writeToFile;
};

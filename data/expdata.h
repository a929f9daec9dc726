#pragma once

#include <QCoreApplication>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QVector>

#include <memory>

#include <qwt_series_data.h>

#include "data/calculation.h"
#include "data/derivedcurve.h"
#include "data/joinedrows.h"
#include "data/prediction.h"
#include "data/samplestep.h"
#include "sensors/sensor.h"
#include "sensors/units.h"

class FFTData;
class TembrinProtocol;
class TimeAxis;

/// One experiment: a time axis shared by all channels, the samples of each channel and the sensors that
/// describe them. Samples and extremes are in the sensors' base units; the reading operations whose comment
/// says so convert to the unit on display. A channel may be shorter or longer than the time axis; a sample
/// that is not a number is a gap.
///
/// The sensors are this set's own: what it is given it copies, so nothing that a logger or another set does
/// changes it. Channels that were derived stand behind all others and follow them.
///
/// Qwt draws from it as curve data of one channel at a time: call setSensorToDraw() before size(), sample()
/// and boundingRect(). An index without a channel reads as an empty channel and changes nothing on writing.
/// GUI thread only.
class ExpData : public QwtSeriesData<QPointF>
{
    Q_DECLARE_TR_FUNCTIONS(ExpData)

public:
    /// The kinds of derived channel, as Sensor::specialType tells them.
    enum specialCurve
    {
        CURVE_SMOOTH = 1,
        CURVE_DERIV = 2,
        CURVE_FORMULA = 3 ///< Sensor::calculation says how
    };

    /// A data set without a logger, for the class or a simulation: two voltage channels, no samples. Channels
    /// that it makes itself show their values in `units`.
    explicit ExpData(const Units& units = {});
    /// The data set of a logger, with the two channels that its model shows first; those become the
    /// logger's active sensors. The logger is looked at this once.
    explicit ExpData(TembrinProtocol* tembrin);
    ~ExpData() override;

    // --- filling (expdata.cpp) ---

    /// The two channels that a logger model shows before a run; none for an unknown model code.
    void setDummySensors(int tembrinType);
    /// Empties the set, channels included.
    void setDataNewEmpty();
    /// A channel like `sensor` that no logger or other set shares; null gives one without a meaning.
    SensorPtr ownCopy(const SensorPtr& sensor) const;
    /// Starts an experiment without samples, so there is nothing to save; `dt` in seconds, 0 for manual
    /// sampling.
    void setDataNewEmpty(const SensorList& channels, double dt, const QString& name = QString());
    /// Starts a load: `nSens` empty slots, times `t` in seconds (sample numbers when `dt` is 0).
    void setDataNew(int nSens, const QVector<double>& t, double dt);
    /// A finished download: channels and their columns of samples in base units, a column maybe shorter than
    /// others. Leaves the set as it is when there are no samples.
    void takeExperiment(const SensorList& channels, double dt, const QVector<QVector<double>>& columns);
    /// The same with times of its own, which ascend: seconds, or sample numbers when `dt` is 0.
    void takeExperiment(const SensorList& channels, double dt, const QVector<double>& times,
                        const QVector<QVector<double>>& columns);
    /// Fills a slot with a loaded channel of base-unit samples and works out its default view.
    void addSensorData(int dataIndex, int masterID, const QVector<double>& v, int curveModeHint,
                       bool appendMode = false);
    /// Fills a slot with an imported channel that has no catalogue entry.
    void addSpecialSensorData(const QString& name, const QString& unit, int dataIndex,
                              const QVector<double>& v);
    void setSensorSpecialName(int dataIndex, const QString& name);
    /// The name with the number of the appended experiment, if there is one.
    QString adaptSensorName(const QString& name) const;
    /// View range in the base unit; no range where `minView` is not below `maxView`.
    void setSensorScale(int dataIndex, double minView, double maxView);
    void setSensorScaleBar(int dataIndex, double barMinView, double barMaxView);
    /// The extent of the times after a load; marks the data as final.
    void setXRange();
    /// Puts rows in that are missing, or are gaps: `times` ascend, a column for each recorded channel. How
    /// many it were; -1, with nothing changed, if what is there of a row is something else.
    int fillRows(const QVector<double>& times, const QVector<QVector<double>>& columns);
    void replaceYVal(int iSens, int iSamp, double value);
    /// Removes samples `from` to `to` inclusive of all channels; extremes stay.
    void removeSamples(int from, int to);
    /// Keeps the samples with x0 <= time < x1. Does nothing if no time reaches x0.
    void doCrop(double x0, double x1);

    // --- samples (expdata_live.cpp); each costs a constant time per channel ---

    /// Appends one value per channel of the run at `xval` seconds, base units; derived channels follow.
    void addSample(double xval, const QVector<double>& values);

    // --- by a formula (expdata_calculated.cpp) ---

    /// Appends a channel that follows its origins, also before there are samples, and comes along into the
    /// next run of these channels. False, with nothing changed, for a recipe that makes no sense here.
    bool addCalculated(const Calculation::Recipe& recipe);
    /// Channel `channel` came from a file with its values, and goes on by its formula.
    void restoreCalculated(int channel, const Calculation::Recipe& recipe, bool isRangeFixed);

    // --- repeated runs (expdata_repeat.cpp) ---

    /// Starts a repeated run: the last run stays as the first half of the channels. Rows of samples hold the
    /// channels of the new run from now on, and go along the axis of the last as far as it reaches.
    void setDataAddRepeatExp();
    bool isRepeatMode() const { return firstLive > 0; }
    /// The repeated run has not caught up with the previous one.
    bool isRepeatMode1stPhase() const;
    void duplicateSensorList();

    // --- appending (expdata_append.cpp) ---

    /// Makes room for `nSens` channels of an appended experiment. False, with nothing changed, if its rate
    /// or first time differ or it has no times.
    bool mergeDataFromNewOpen(int nSens, const QVector<double>& t, double dt);
    /// Moves one channel from lastShift to `shift` samples by padding at its front.
    void setShift(int iSens, int shift, bool newData);
    /// Moves the experiment appended last to `shift` samples later (earlier below 0) than the others.
    void shiftLastData(int shift);

    // --- class set (expdata_class.cpp): one channel per group, the average, then derived ones ---

    /// The value of one group at time `t`, seconds or a sample number: the row of that time, to half a
    /// sample, is found or inserted. A constant time for the newest rows. What the user cut away stays away.
    void joinSample(int channel, double t, double value);
    /// One group's channel anew from the selected channel of `from`; `kind` says what it is. The other
    /// groups, what the user cut away and ranges set by hand for sensors of the kind stay.
    void joinChannel(int channel, const SensorPtr& kind, const ExpData& from);
    /// The channel of the average; that before the derived ones.
    int meanIndex() const;
    /// The channel is the average of the others.
    bool isAverage(int channel) const { return isAveraged && channel == meanIndex(); }
    /// All groups that count in the average measure the same, if with different sensors.
    bool isOfOneKind() const;
    /// A group that a person took out of the average, or put back. Its curve stays, and the average is worked
    /// out anew. Does nothing for what is no group.
    void setOut(int channel, bool tf);
    bool isOut(int channel) const { return outs.contains(channel); }
    const QVector<int>& out() const { return outs; }
    /// As a file says it, without working out anything.
    void takeOut(const QVector<int>& channels) { outs = channels; }
    /// The standard deviation (n - 1) of the groups in the average, for each of its rows, base unit; not a
    /// number for fewer than two.
    const QVector<double>& spread() const;
    /// The average of light and acidity, which no file and no table shall hold.
    bool isMeaningless(int channel) const;
    /// Over how many groups the average of a row is.
    int valuesAt(int row) const;
    /// Rows up to which every group that still delivers has its value: until the others have sent theirs, the
    /// newest average would be that of whoever was first. In the last rows of a run the others never do.
    int settledRows() const;
    /// How many groups the newest rows of the average are over.
    int groupsInAverage() const;
    /// joinSample() for what channel `index` lacks of the selected channel of `refData`.
    void addSample(int index, const ExpData* refData);
    /// The average over the groups that have a value; with `reset` from the first row on.
    void updateMean(bool reset);
    /// joinChannel() with the channel that is there.
    void copyValues(int iSens, const ExpData* fromData);

    // --- ranges (expdata_scales.cpp) ---

    /// Extremes of `v`: a zero is the minimum only as the first value. Without a value both stay.
    static void findMinMax(const QVector<double>& v, double& min, double& max);
    /// One common class range for all channels with this sensor ID; the last channel follows only.
    void makeUniformScales(int ID);
    void makeUniformScales();
    void makeUniformScalesAfterOpen();

    // --- taking back (expdata_content.cpp) ---

    /// Samples and channels as one value. It shares the samples with the set until one of them changes.
    struct Content
    {
        double dt = 1;
        QVector<double> x;
        QVector<QVector<double>> y;
        SensorList sensors; ///< its own
        QVector<int> leftPad;
        QVector<double> minY;
        QVector<double> maxY;
        TimeCuts cuts;
        int firstLive = 0;
        int appendIndex = 0;
        int lastShift = 0;
        bool isAveraged = false;
        Content withoutLastChannel() const;
    };
    Content content() const;
    /// In place of what is there; the selection stays if it can.
    void setContent(const Content& kept);
    /// The samples and the channels' kinds and names are those of `kept`.
    bool holds(const Content& kept) const;
    /// As many channels, derived in the same way.
    bool isLike(const Content& kept) const;
    /// Which channels are others than those of `kept`, or have other samples.
    QVector<int> channelsUnlike(const Content& kept) const;
    /// What was done to `before`, to the one channel if it was not a crop.
    SampleStep stepSince(const Content& before, int channel) const;
    /// The same again; false, with nothing changed, where it cannot be.
    bool make(const SampleStep& step);
    /// Takes derived channels away until `n` channels are left.
    void dropDerived(int n);

    // --- playing again (expdata_replay.cpp); neither counts as a change of what is to be saved ---

    /// Only the first `rows` of `whole`, which content() gave, as if no more had been measured yet. More rows
    /// than before cost by their number, fewer a look at all that stay.
    void showFirst(const Content& whole, int rows);
    /// All of it again, with the ranges that it had. The channels stay the same objects.
    void showWhole(const Content& whole);

    // --- reading ---

    int getNSens() const { return sensors.size(); }
    /// Null outside the list, and for a slot that is not filled yet.
    const SensorPtr& getSens(int i) const;
    const SensorList& getSensors() const { return sensors; }
    const SensorPtr& get1stSensor() const { return getSens(0); }
    /// The selected channel's sensor; null with a negative selection.
    const SensorPtr& getActiveSens() const { return getSens(iSelectedSensor); }
    /// The same, with a negative selection read as 0.
    const SensorPtr& getActiveSensor() const { return getSens(qMax(0, iSelectedSensor)); }
    int activeSensIndex() const { return iSelectedSensor; }
    int getSelectedSensor() const { return iSelectedSensor; }
    /// Ignored for an index beyond the channels.
    void setSelectedSensor(int i);
    void setSensorToDraw(int i) { iSensorToDraw = i; }
    int getSensorToDraw() const { return iSensorToDraw; }
    /// The channel that serves as X axis, −1 for a time plot.
    void setXYIndex(int i) { xySensIndex = i; }
    int getXYIndex() const { return xySensIndex; }
    bool isXYPlot() const { return xySensIndex >= 0; }
    /// The channel whose scale stands right of the graph too, −1 for none. A new run of the same channels
    /// keeps it.
    void setRightIndex(int i) { rightIndex = i; }
    int getRightIndex() const { return rightIndex; }

    int getXSize() const { return x.size(); }
    int getYSize(int i) const { return getYNoConv(i).size(); }
    const QVector<double>& getX() const { return x; }
    double getXAt(int i) const { return i >= 0 && i < x.size() ? x.at(i) : 0.0; }
    /// All samples, base units.
    const QVector<QVector<double>>& getData() const { return y; }
    /// Samples of one channel, base unit. A copy that is kept makes the next sample copy the channel once.
    const QVector<double>& getYNoConv(int iSens) const;
    double getYNoConvAt(int iSens, int k) const;
    double getYNoTempConversionAt(int iSens, int k) const { return getYNoConvAt(iSens, k); }
    /// Samples in the unit on display.
    double getYAt(int iSens, int k) const;
    QVector<double> getY(int iSens) const;
    /// Extremes in the unit on display; without argument of the channel to draw.
    double getMinY(int i) const;
    double getMaxY(int i) const;
    double getMinY() const { return getMinY(iSensorToDraw); }
    double getMaxY() const { return getMaxY(iSensorToDraw); }
    double getMinX() const { return minX; }
    double getMaxX() const { return maxX; }
    /// First and last time of the channel to draw, 0 while it is empty.
    double firstX() const;
    double lastX() const { return getLastXForIndex(iSensorToDraw); }
    /// The time of the channel's last sample, 0 while it is empty.
    double getLastXForIndex(int i) const;
    int locateSensByID(int ID) const;
    bool hasGPS() const;
    /// The index of the colorimeter's red channel, −1 without one.
    int hasColorimeter() const { return locateSensByID(SENSOR_COLORIMETER_R); }

    /// Samples, or what the user did to them or marked on the graph, are not saved. Neither a load nor what
    /// the program builds or empties raises it.
    bool isNeedSave() const { return needSave; }
    void setNeedSave(bool tf) { needSave = tf; }
    const QString& getGroupName() const { return groupName; }
    void setGroupName(const QString& name) { groupName = name; }
    int getAppendIndex() const { return appendIndex; }
    void setAppendIndex(int i) { appendIndex = i; }
    int getLeftPad(int i) const { return leftPad.value(i, 0); }
    void setLeftPad(int i, int pad);

    /// Width of the card that passes photogates, m.
    void setCardWidth(double width) { cardWidth = width; }

    /// The axis that shows this set, for time texts; not owned, may be null.
    void setTimeScale(const TimeAxis* ts) { timeScale = ts; }
    bool timeScaleSet() const { return timeScale != nullptr; }
    double getTimeScaledT() const;
    QString getTimeScaleUnitName() const;
    QString getTimeScaleString(int iSamp) const;

    // --- series face of the channel to draw ---

    size_t size() const override;
    /// The point in the unit on display; beyond the end the last point.
    QPointF sample(size_t i) const override;
    /// Extent in base units; null while there are no times.
    QRectF boundingRect() const override;

    // --- analysis (expdata_analysis.cpp); results in the unit on display, times in seconds ---

    /// Replaces the selected channel by its moving average over smoothKernel samples.
    void smoothCurve();
    /// Appends a channel derived from the selected one. Nothing on fewer than two samples.
    void addSpecialCurve(int type);
    /// The curve at time X: linear between samples and beyond the last, the first value before the first. Not
    /// a number inside a gap.
    double interpolateY(int iSens, double X) const;
    /// Slope of the tangent at time x1: a line fitted to the samples nearer than `reach` seconds, though to
    /// DerivedCurve::leastWindow of them at least and mostWindow at most. Not finite outside the curve, at a
    /// gap, and where the times do not settle it.
    double tangentSlope(int iSens, double x1, double reach) const;
    /// Area under the curve between two times, x1 below x2; a gap adds nothing.
    double integral(int iSens, double x1, double x2) const;
    /// Fit y = a x² + b x + c over a time span with the correlation r; degree 1 gives a = 0.
    void regression(int degree, int iSens, double x1, double x2, double* a, double* b, double* c,
                    double* r) const;
    /// The same on an XY plot, between the samples nearest to two points of the curve.
    void regressionXY(int degree, int iSens, double x1, double x2, double y1, double y2, double* a, double* b,
                      double* c, double* r) const;
    /// The first of the samples that are nearest to a point of an XY plot, with both axes scaled to their
    /// data; -1 without any.
    int nearestXY(int iSens, double px, double py) const;
    static void linearRegression(const QVector<QPointF>& points, double* a, double* b, double* r);
    static void quadRegression(const QVector<QPointF>& points, double* a, double* b, double* c, double* r);
    /// Speed (m/s) of the first object through a photogate; all 0 where there was none.
    void photoSpeed(int iSens, double* speed, double* midTime, double* deltaT, double* width) const;
    /// Acceleration between two photogates; leaves the results alone where a gate shows no object.
    void photoAccel(int iSens1, int iSens2, double* accel, double* deltaV, double* midTime,
                    double* deltaT) const;
    /// Statistics of the selected channel, with the population standard deviation; 0 on no samples.
    void calcStat(double* min, double* max, double* avg, double* stdv) const;
    /// The spectrum of a channel between two times, of the whole channel if they are equal, into `fftData`:
    /// of the middle of the stretch, as long as the greatest power of two samples. Gaps are bridged. False,
    /// with nothing changed, without times or samples and where more is missing than there is.
    bool fft(int iSens, double x1, double x2, const QString& window = QString());

    const std::unique_ptr<FFTData> fftData;

    double dt = 1.0;                 ///< seconds between samples; 0 or less: manual sampling, no time base
    QVector<double> minY;            ///< extremes of each channel, base unit
    QVector<double> maxY;            ///< extremes of each channel, base unit
    QVector<int> curveModeHint;      ///< curve mode to restore on the plot, −1 for its default
    double sensRange = 0.0;          ///< span of the selected sensor
    double minLimit = 0.0;           ///< lowest value of the selected sensor
    bool finalData = false;          ///< no more samples are coming
    QVector<Prediction> predictions; ///< at most one of a channel; runs come and go before them
    int smoothKernel = 3;            ///< width of the moving average in samples
    int derivWindow =
        3; ///< samples that a derivative is fitted over; below 5: the change from one to the next

private:
    // Channels
    bool hasSlot(int i) const { return i >= 0 && i < sensors.size(); }
    int deliveredRows(int channel) const;
    int editedSince(const Content& before) const;
    void takeFilled(const QVector<double>& times, const QVector<QVector<double>>& columns);
    void resizeChannels(int n);
    void emptyChannels(int n);
    void keepSelectionInside();
    int rightIn(const SensorList& channels) const;
    void updateXExtent();
    double shown(int iSens, double value) const;
    double samplePeriod() const { return dt > 0 ? dt : 1.0; }
    SensorPtr ownChannel(int ID) const;
    void copyChannels(const SensorList& channels);

    // Ranges and live samples
    void updateMapRange(int iSens);
    void setDefaultView(int iSens);
    int decimalsOf(int calculated) const;
    void viewExtremes(int iSens);
    void followValue(int iSens, double value);
    void followLiveRange(int iSens, bool isFirst);
    void followRows(int iSens, int first);
    void putValue(int iSens, int row, double value);

    // Joining
    void fitXToLongestChannel();
    void padFront(int iSens, int n);
    int rowFor(double t);
    int insertRow(int at, double t);
    void takeKind(int channel, const SensorPtr& kind);
    void mergeRows(int channel, const QVector<QPointF>& values);
    void averageRow(int mean, int row);
    double deviationAt(int row, double average) const;
    double spreadAt(int row) const;
    void followSpread();
    bool counts(int channel, int row) const;
    bool isLastTheMean() const;
    void shareClassRange();

    // Calculated
    void calculate(int channel, int first, int last);
    void followWhole(int changed);
    SensorList withCalculated(SensorList list) const;

    // Analysis
    void followOrigins(int first, int last);
    DerivedCurve derivation(int type) const;
    QString smoothedName(const QString& name) const;
    SensorPtr derivedFrom(int origin, int index, int type) const;
    void renewDerived(int channel);
    void describeSpecialCurve(int iSens, const Sensor& origin);
    int timedSamples(int iSens) const;
    QVector<QPointF> span(int iSens, double x1, double x2) const;

    QVector<double> x;
    QVector<QVector<double>> y;
    SensorList sensors;
    int nSens = 0;
    TimeCuts cuts;        ///< what the user took away
    QVector<int> leftPad; ///< leading samples of a channel that only a shift put there
    double minX = 0.0;
    double maxX = 0.0;
    bool needSave = false;
    bool isAveraged = false; ///< the set is that of a class
    QVector<int> outs;       ///< groups that a person took out of the average
    /// Of the average; shorter or longer than that where it has to be worked out anew.
    mutable QVector<double> deviations;
    int iSensorToDraw = 0;
    int iSelectedSensor = 0;
    int xySensIndex = -1;
    int rightIndex = -1;
    int firstLive = 0;       ///< the channel that a row of samples begins with
    int appendIndex = 0;     ///< experiments appended so far
    int lastShift = 0;       ///< samples by which the experiment appended last lies later
    double cardWidth = 0.05; ///< m
    const TimeAxis* timeScale = nullptr;
    const Units units;
    QString groupName;
};

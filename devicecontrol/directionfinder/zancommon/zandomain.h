#pragma once

#include <QtGlobal>

/// \file
/// The terms that the whole library uses: device models, receivers, modes, methods, ranges.
///
/// All enumerations are 32 bits wide. Their numeric values are used in the catalogue tables, in list
/// terminators, in bit masks, in settings and in the value tree: none of them may change.

/// DF device model.
enum EZANType : qint32 {
    ZANTYPE_ZANTIDE = 0, ///< also used for a device whose type name is missing or unknown
    ZANTYPE_ZANREEF = 1,
    ZANTYPE_ZANDUNE = 2,
    ZANTYPE_ZANFERN = 3,
    ZANTYPE_ZANMOSS = 4, ///< the only model with the sample modes from 1000 on
    ZANTYPE_5 = 5,       ///< models 5, 6 and 7 have no type name
    ZANTYPE_6 = 6,
    ZANTYPE_7 = 7,
    ZANTYPE_END = 8 ///< closes a list of device models; never a device
};

/// Receiver or frequency converter in front of the DF unit.
enum EZANConverter : qint32 {
    CONVERTER_NONE = 0, ///< no converter or an unknown one; closes a list of converters
    CONVERTER_1 = 1,    ///< has no type name
    CONVERTER_RCV01 = 2,
    CONVERTER_RCV03 = 3,
    CONVERTER_RCV05 = 4, ///< neither an HF nor a VUHF converter
    CONVERTER_RCV07 = 5,
    CONVERTER_RCV04 = 6,
    CONVERTER_RCV06 = 7,
    CONVERTER_RCV02 = 8,
    CONVERTER_RCV08 = 9,
    CONVERTER_RCV09 = 10,
    CONVERTER_RCV10 = 11
};

/// What the DF device is doing.
enum EOperationMode : qint32 {
    OPMODE_END = -2, ///< closes a list of operation modes; never a mode
    OPMODE_ANY = -1, ///< as an argument and in a list of modes: every mode
    OPMODE_0 = 0,
    OPMODE_FFM = 1, ///< fixed frequency
    OPMODE_WIDEBAND_FFM =
        2, ///< a whole band around the fixed frequency, which must fit into the antenna's range
    OPMODE_SCAN = 3,
    OPMODE_SEARCH = 4,
    OPMODE_5 = 5,
    OPMODE_TDMA = 6, ///< 200 kHz channels with time slots
    OPMODE_7 = 7,
    OPMODE_8 = 8,
    OPMODE_9 = 9
};

/// Realtime bandwidth and converter configuration of the DF unit; the sample-mode table has the details.
enum EZANSampleMode : qint32 {
    SAMPLEMODE_END = -1, ///< closes the sample-mode table; as a result: no sample mode
    SAMPLEMODE_HF_100K = 0,
    SAMPLEMODE_HF_200K = 1,
    SAMPLEMODE_HF_500K = 2,
    SAMPLEMODE_HF_1M = 3,
    SAMPLEMODE_HF_WIDEBAND_1M = 4, ///< the wideband modes reach HF through a second converter
    SAMPLEMODE_HF_WIDEBAND_2M = 5,
    SAMPLEMODE_HF_WIDEBAND_5M = 6,
    SAMPLEMODE_HF_WIDEBAND_10M = 7,
    SAMPLEMODE_VUHF_100K = 8,
    SAMPLEMODE_VUHF_200K = 9,
    SAMPLEMODE_VUHF_500K = 10,
    SAMPLEMODE_VUHF_1M = 11,
    SAMPLEMODE_VUHF_2M = 12,
    SAMPLEMODE_VUHF_5M = 13,
    SAMPLEMODE_VUHF_10M = 14,
    SAMPLEMODE_VLF_100K = 15,
    SAMPLEMODE_VLF_200K = 16,
    SAMPLEMODE_VLF_500K = 17,
    SAMPLEMODE_TDMA_200K = 18,
    SAMPLEMODE_VLF_1M = 19,
    SAMPLEMODE_ZANMOSS_RCV02_04_06 = 1000, ///< the modes from 1000 on are named after their receivers
    SAMPLEMODE_ZANMOSS_RCV08 = 1001,
    SAMPLEMODE_ZANMOSS_RCV09 = 1002,
    SAMPLEMODE_ZANMOSS_RCV10 = 1003
};

/// Frequency range class of a sample mode or an antenna.
enum EFreqRange : qint32 {
    FREQRANGE_UNKNOWN = -1, ///< there is no antenna to determine it
    FREQRANGE_HF = 0,       ///< 300 kHz to 30 MHz
    FREQRANGE_VUHF = 1,     ///< 20 MHz to 3.6 GHz
    FREQRANGE_VLF = 2       ///< 9 kHz to 1 MHz
};

/// DF method that a user selects.
enum EZANMethod : qint32 {
    METHOD_WAT = 0,  ///< Watson-Watt
    METHOD_COR = 1,  ///< correlation
    METHOD_SUPR = 2, ///< super resolution
    METHOD_VEC = 3   ///< vector matching
};

/// DF methods that an antenna offers in a frequency range: bits of a mask. An antenna has a method when all
/// bits of the method are set in its mask.
enum EZANMethodDetailed : qint32 {
    METHODDETAILED_NONE = 0,
    METHODDETAILED_WAT = 1,
    METHODDETAILED_COR = 2,
    METHODDETAILED_VEC = 4,
    METHODDETAILED_SUPR = 8 ///< super resolution; always together with METHODDETAILED_COR
};

/// Polarisation that an antenna receives.
enum EZANPolarisation : qint32 {
    POLARISATION_LEFT = 0,
    POLARISATION_RIGHT = 1,
    POLARISATION_VERTICAL = 2,
    POLARISATION_HORIZONTAL = 3
};

/// Option that a DF device reports as installed. Some models report an option under another name: the HF
/// receiver, HF and high-bandwidth options of ZANDUNE are the values 4, 9 and 10.
enum EZANOptions : qint32 {
    OPTION_NONE = 0, ///< no option; every device counts as having it
    OPTION_ZAN_CL = 1,
    OPTION_ZAN_DR = 2,
    OPTION_ZAN_GSM = 3,
    OPTION_ZAN_HFR = 4,
    OPTION_ZAN_LF = 5,
    OPTION_ZAN_TS = 6,
    OPTION_ZANTIDE_WB = 7,
    OPTION_ZANTIDE_SR = 8,
    OPTION_ZANREEF_HF = 9,
    OPTION_ZANREEF_HBW = 10,
    OPTION_ZANREEF_SR = 11,
    OPTION_ZANREEF_WB = 12,
    OPTION_ZANFERN_4C = 13,
    OPTION_ZAN_TRA = 14,
    OPTION_ZAN_SSL = 15,
    OPTION_ZANTIDE_MC = 16,
    OPTION_ZANTIDE_REM = 17,
    OPTION_ZANREEF_MC = 18,
    OPTION_ZANREEF_REM = 19
};

#pragma once

class IInterface;

/**
 * The host's services, one set for the whole module and shared by every driver instance.
 *
 * Null until the module is initialised; an optional service that the host lacks stays null. Only the module object
 * writes them; all others read them and test the optional ones for null.
 */
extern IInterface* piMultiTask;        ///< "IMultiTask2", required: the scheduler
extern IInterface* piSerialFactory;    ///< "ISerialFactory", required: creates serial ports
extern IInterface* piSocketFactory;    ///< "ISocketFactory", required: only listed by the version banner
extern IInterface* piCDSBuffer;        ///< "ICDSBuffer", required: not used
extern IInterface* piDiag;             ///< "IDiag", optional: not used
extern IInterface* piPermanentStorage; ///< "IPermanentStorage", optional: where symbol files are kept
extern IInterface* piDriverInterface;  ///< "IDriverInterface", optional: not used
extern IInterface* piSmux;             ///< "ISmux", optional: not used
extern IInterface* piFastTimer;        ///< "IFastTimer", optional: not used

/** Gives the processor to the host's other tasks once. Does nothing without a scheduler. */
void yieldToHost();

// The text constants of the module, made at start-up with the other static
// values.
#include "nvk/core/chaine.h"

const Chaine ChaineCrLf("\r\n");
const Chaine ChaineRtfHead("{\\rtf1");
const Chaine ChaineRtfEnd("\\par }");
const Chaine ChaineRtfPar("\\par");

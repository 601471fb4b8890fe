#include "QuilloApp.h"

int main(int argc, char **argv)
{
    return QuilloApp::main(argc, argv);
}

#include <cstdio>

int main(int argc, char** argv)
{
    (void)argv;
    std::printf("stand-in render tool: %d arguments\n", argc - 1);
    return 0;
}

// Runs two programs in turn, many times, and prints for each pair of runs what they took.
//
// Usage: pairs COUNT INPUT VIA COMMAND... [-- COMMAND...]
// Standard input is the file INPUT, or what is written into a pipe from it when VIA is "pipe";
// standard output and error are thrown away. CONTENT_LENGTH is the file's size. Each line of output
// is, for each command, nanoseconds from start to end and kilobytes of memory held at the peak.
//
// A program of its own, static and small, because the peak of a child counts from what its parent
// holds when it starts it.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

struct Input {
    int file;
    const char* bytes;
    size_t size;
    bool through_pipe;
};

static long long nanoseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

static void feed(const Input& input, int pipe_end) {
    for (size_t done = 0; done < input.size;) {
        const ssize_t written = write(pipe_end, input.bytes + done, input.size - done);
        if (written <= 0) {
            break;
        }
        done += static_cast<size_t>(written);
    }
    _exit(0);
}

// Prints the time and the peak; false when the program did not run or did not end with 0.
static bool run(char** command, const Input& input) {
    int pipe_ends[2] = {-1, -1};
    int standard_input = input.file;
    pid_t feeder = -1;
    if (input.through_pipe) {
        if (pipe2(pipe_ends, O_CLOEXEC) != 0) {
            return false;
        }
        standard_input = pipe_ends[0];
    } else {
        lseek(input.file, 0, SEEK_SET);
    }
    const long long start = nanoseconds();
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(standard_input, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        execvp(command[0], command);
        _exit(127);
    }
    if (input.through_pipe) {
        feeder = fork();
        if (feeder == 0) {
            close(pipe_ends[0]);
            feed(input, pipe_ends[1]);
        }
        close(pipe_ends[0]);
        close(pipe_ends[1]);
    }
    int status = 0;
    rusage used = {};
    wait4(child, &status, 0, &used);
    const long long end = nanoseconds();
    if (feeder > 0) {
        waitpid(feeder, nullptr, 0);
    }
    printf("%lld %ld ", end - start, used.ru_maxrss);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

int main(int count, char** arguments) {
    if (count < 5) {
        return 2;
    }
    Input input = {open(arguments[2], O_RDONLY | O_CLOEXEC), nullptr, 0,
                   strcmp(arguments[3], "pipe") == 0};
    struct stat file = {};
    if (input.file < 0 || fstat(input.file, &file) != 0) {
        perror(arguments[2]);
        return 1;
    }
    input.size = static_cast<size_t>(file.st_size);
    if (input.size > 0) {
        input.bytes = static_cast<const char*>(
            mmap(nullptr, input.size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, input.file, 0));
    }
    setenv("CONTENT_LENGTH", std::to_string(input.size).c_str(), 1);
    signal(SIGPIPE, SIG_IGN);

    std::vector<char**> commands = {arguments + 4};
    for (int i = 4; i < count; i++) {
        if (strcmp(arguments[i], "--") == 0) {
            arguments[i] = nullptr;
            commands.push_back(arguments + i + 1);
        }
    }
    for (int left = atoi(arguments[1]); left > 0; left--) {
        for (char** command : commands) {
            if (!run(command, input)) {
                fprintf(stderr, "pairs: %s failed\n", command[0]);
                return 1;
            }
        }
        puts("");
        fflush(stdout);
    }
    return 0;
}
